#pragma once

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include "tests/support/driving.h"

/// The two ends of a serial cable: the test holds the master, the library opens the slave's path.
///
/// A slave descriptor of its own keeps the line up and its settings while the library has it
/// closed. Every wait ends after `LONG_TIME`, with what came until then.
class cPtyPair {
 public:
  cPtyPair() : master(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
    if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0) {
      throw std::runtime_error("no pseudo-terminal to be had");
    }
    path = ptsname(master);
    slave = open(path.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
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

  /// Sends all of `text` to the library.
  void send(const std::string& text) const {
    for (std::size_t sent = 0; sent < text.size();) {
      const ssize_t count = write(master, text.data() + sent, text.size() - sent);
      if (count <= 0) throw std::runtime_error("the master takes no more");
      sent += static_cast<std::size_t>(count);
    }
  }

  /// Takes `size` characters that the library wrote.
  std::string receive(std::size_t size) const {
    std::string text;
    eventually([&] {
      pollfd waiting = {master, POLLIN, 0};
      char c = 0;
      while (text.size() < size && poll(&waiting, 1, 0) > 0 && read(master, &c, 1) == 1) text += c;
      return text.size() >= size;
    });
    return text;
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
  int master;
  int slave = -1;
  std::string path;
};
