#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <sstream>

#include "sim/cSimPty.h"
#include "sim/tarvosim.h"

constexpr std::chrono::milliseconds LONG_TIME(10000);

/// A sensor, and the host's end of its cable: read and write alone. A wait ends when what
/// it waits for has arrived, or after LONG_TIME.
class cRawHost {
 public:
  explicit cRawHost(const cSimSetting& setting = {}) : sensor(setting) {}

  void write(const std::string& bytes) {
    EXPECT_EQ(::write(tty.get(), bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
  }
  /// What arrives up to and including `end`, or until nothing more arrives.
  std::string readUntil(const std::string& end) {
    std::string bytes;
    pollfd input = {tty.get(), POLLIN, 0};
    for (char c = 0; bytes.find(end) == std::string::npos; bytes += c) {
      if (poll(&input, 1, static_cast<int>(LONG_TIME.count())) <= 0 || read(tty.get(), &c, 1) != 1)
        break;
    }
    return bytes;
  }
  /// One record: up to its empty line.
  std::string readRecord() { return readUntil("\n\n"); }
  /// Writes the command and LF, reads the record.
  std::string ask(const std::string& command) {
    write(command + "\n");
    return readRecord();
  }
  /// Everything that the sensor sends before its answer to a QT sent now.
  std::string readAll() {
    write("QT;end\n");
    const std::string all = readUntil("QT;end\n00P\n\n");
    return all.substr(0, all.find("QT;end"));
  }

  cSimSensor sensor;

 private:
  const cSimDescriptor tty{open(sensor.getPath().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC)};
};
