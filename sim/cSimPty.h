#pragma once

#include <termios.h>

#include <string>

/// A file descriptor, closed by the destructor.
class cSimDescriptor {
 public:
  explicit cSimDescriptor(int fd) : fd(fd) {}
  ~cSimDescriptor();
  cSimDescriptor(const cSimDescriptor&) = delete;
  cSimDescriptor& operator=(const cSimDescriptor&) = delete;
  int get() const { return fd; }

 private:
  int fd;
};

/// A pty pair. It keeps the slave open itself: a master whose slave nobody has open reports a
/// hang-up from poll(2) all the time. Destroying it hangs up on every host that has the slave open.
class cSimPty {
 public:
  /// Opens the pair; the slave is raw, without echo, at this line speed (B0: the system's default).
  /// Throws std::system_error.
  explicit cSimPty(speed_t speed);

  const std::string& getPath() const { return path; }
  int getMaster() const { return master.get(); }
  /// The line speed that the host has set; B0 if it cannot be read. On Linux tcgetattr(3) on the
  /// master returns the slave's settings.
  speed_t hostSpeed() const;

 private:
  cSimDescriptor master;
  std::string path;
  cSimDescriptor slave;
};
