#pragma once

#include <string>

#include "sim/cSimPty.h"
#include "sim/cSimRandom.h"
#include "sim/cSimSetting.h"

/// The cable: carries bytes between a pty's master and the sensor; unchanged while both ends have
/// the same line speed, otherwise turned into as many bytes of garbage.
class cSimLine {
 public:
  cSimLine(const cSimSetting& setting, std::uint64_t seed);

  /// The termios constant of a line speed, B0 for 0. Throws std::system_error if there is none.
  static speed_t constantOf(int speed);

  const cSimPty& getPty() const { return pty; }
  void setSpeed(int bitsPerSecond) { sensorSpeed = constantOf(bitsPerSecond); }
  /// What the host has written since the last call; "" if nothing. Never blocks.
  std::string receive();
  /// Sends bytes to the host; returns how many the pty had room for. Never blocks.
  /// @param isRecordStart  whether a burst of garbage would begin here
  std::size_t send(const char* bytes, std::size_t count, bool isRecordStart);

 private:
  bool matches() const { return sensorSpeed == B0 || pty.hostSpeed() == sensorSpeed; }
  void beginBurst();
  void garble(std::string& bytes);

  const eSimGarbage garbage;
  speed_t sensorSpeed;
  cSimPty pty;
  cSimRandom random;
  bool hasLineFeeds = false;  ///< whether the garbage of this burst has line feeds
  unsigned garbledBytes = 0;  ///< so far, for the interval of line feeds
};
