#pragma once

#include <string>

#include "sim/cSimPty.h"
#include "sim/cSimRandom.h"
#include "sim/cSimSetting.h"

/// The cable: bytes between a pty's master and the sensor, whole where both ends have the same
/// line speed and garbage where they have not. As many bytes come out as go in.
class cSimLine {
 public:
  cSimLine(const cSimSetting& sensorSetting, std::uint64_t seed);

  /// The termios constant of a line speed, B0 for 0. Throws std::system_error for a speed that has
  /// none.
  static speed_t constantOf(int speed);

  const cSimPty& getPty() const { return pty; }
  void setSpeed(int bitsPerSecond) { ownSpeed = constantOf(bitsPerSecond); }
  /// Takes what the host has written; "" if there is nothing.
  std::string hear();
  /// Says bytes; returns how many of them there was room for.
  std::size_t say(const char* bytes, std::size_t count, bool recordBegins);

 private:
  bool matches() const { return ownSpeed == B0 || pty.hostSpeed() == ownSpeed; }
  void beginBurst();
  void garble(std::string& bytes);

  const eSimGarbage kind;
  speed_t ownSpeed;
  cSimPty pty;
  cSimRandom random;
  bool lineFeeds = false;  ///< whether the garbage of this burst has line feeds
  unsigned garbled = 0;
};
