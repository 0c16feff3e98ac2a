#pragma once

#include <termios.h>

#include <string>

/// A file descriptor that closes itself.
class cSimDescriptor {
 public:
  explicit cSimDescriptor(int descriptor) : fd(descriptor) {}
  ~cSimDescriptor();
  cSimDescriptor(const cSimDescriptor&) = delete;
  cSimDescriptor& operator=(const cSimDescriptor&) = delete;
  int get() const { return fd; }

 private:
  int fd;
};

/// A pty pair. It holds a slave descriptor of its own: a master whose slave nobody has open hangs
/// up at once and stays readable. Destroying it hangs up on the hosts that have the slave open.
class cSimPty {
 public:
  /// Opens the pair, the slave raw and without echo at this line speed (0: as the system has it).
  /// Throws std::system_error.
  explicit cSimPty(speed_t speed);

  const std::string& getPath() const { return path; }
  int getMaster() const { return master.get(); }
  /// The line speed that the host has set. On Linux the master answers with the slave's settings.
  speed_t hostSpeed() const;

 private:
  cSimDescriptor master;
  std::string path;
  cSimDescriptor slave;
};
