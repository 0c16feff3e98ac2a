#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <sstream>

#include "sim/tarvosim.h"

constexpr std::chrono::milliseconds LONG_TIME(10000);

/// A host that knows nothing but termios, read and write: the tests' end of the cable. Its waits
/// end when what they wait for is there, or after LONG_TIME.
class cRawHost {
 public:
  /// Opens the slave raw at this line speed, a constant of termios (0: as it is).
  explicit cRawHost(const std::string& path, speed_t speed = 0)
      : fd(open(path.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC)) {
    EXPECT_GE(fd, 0) << path;
    if (speed != 0) setSpeed(speed);
  }
  ~cRawHost() { close(fd); }
  cRawHost(const cRawHost&) = delete;
  cRawHost& operator=(const cRawHost&) = delete;

  void setSpeed(speed_t speed) {
    termios modes;
    tcgetattr(fd, &modes);
    cfmakeraw(&modes);
    cfsetspeed(&modes, speed);
    tcsetattr(fd, TCSANOW, &modes);
  }
  void write(const std::string& bytes) {
    EXPECT_EQ(::write(fd, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
  }
  /// What arrives up to and with `end`; all that arrived if that does not come.
  std::string readUntil(const std::string& end) {
    while (arrived.find(end) == std::string::npos && readSome()) {
    }
    const std::size_t place = std::min(arrived.find(end), arrived.size());
    const std::string bytes = arrived.substr(0, place + end.size());
    arrived.erase(0, bytes.size());
    return bytes;
  }
  /// One record: up to its empty line.
  std::string readRecord() { return readUntil("\n\n"); }
  /// Writes the command and LF, reads the record.
  std::string ask(const std::string& command) {
    write(command + "\n");
    return readRecord();
  }
  /// All that was said before the answer to a QT sent now.
  std::string readAll() {
    write("QT;end\n");
    const std::string all = readUntil("QT;end\n00P\n\n");
    return all.substr(0, all.find("QT;end"));
  }

 private:
  bool readSome() {
    pollfd input = {fd, POLLIN, 0};
    char bytes[4096];
    if (poll(&input, 1, static_cast<int>(LONG_TIME.count())) <= 0) return false;
    const ssize_t count = read(fd, bytes, sizeof bytes);
    if (count > 0) arrived.append(bytes, static_cast<std::size_t>(count));
    return count > 0;
  }

  int fd;
  std::string arrived;  ///< read and not yet taken
};
