#pragma once

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "tests/support/driving.h"

/// The two ends of a serial cable: the test holds the master, the library opens the slave's path.
///
/// A slave descriptor of its own keeps the line up and its settings while the library has it
/// closed. Every wait ends after `LONG_TIME`, with what came until then.
class cPtyPair {
 public:
  cPtyPair() {
    if (openpty(&master, &slave, nullptr, nullptr, nullptr) != 0)
      throw std::runtime_error("no pseudo-terminal is available");
    path = ttyname(slave);
    for (const int end : {master, slave}) fcntl(end, F_SETFD, FD_CLOEXEC);
  }
  ~cPtyPair() {
    close(slave);
    hangUp();
  }
  cPtyPair(const cPtyPair&) = delete;
  cPtyPair& operator=(const cPtyPair&) = delete;

  const std::string& getPath() const { return path; }
  int getMaster() const { return master; }
  int getSlave() const { return slave; }

  /// Pulls the cable.
  void hangUp() {
    if (master >= 0) close(master);
    master = -1;
  }

  /// Sends `text` to the library.
  void send(const std::string& text) const {
    const ssize_t sent = write(master, text.data(), text.size());
    if (sent != static_cast<ssize_t>(text.size())) throw std::runtime_error("the line is full");
  }

  /// Takes `size` characters that the library wrote.
  std::string receive(std::size_t size) const {
    std::string text(size, '\0');
    std::size_t taken = 0;
    for (pollfd waiting = {master, POLLIN, 0}; taken < size && poll(&waiting, 1, LONG) > 0;)
      taken += static_cast<std::size_t>(read(master, &text[taken], size - taken));
    return text.substr(0, taken);
  }

  /// Waits until `size` characters wait to be read by the library.
  bool waitUntilWaiting(int size) const {
    eventually([&] { return countWaiting() >= size; });
    return countWaiting() == size;
  }

  /// Characters that wait to be read by the library (only in raw mode).
  int countWaiting() const {
    int size = 0;
    ioctl(slave, FIONREAD, &size);
    return size;
  }

  termios getAttributes() const {
    termios attributes = {};
    tcgetattr(slave, &attributes);
    return attributes;
  }

 private:
  int master = -1;
  int slave = -1;
  std::string path;
};
