#pragma once

#include <array>
#include <cstdint>

namespace tarvo {

/// Keeps the offset from a sensor's clock to the host's monotonic one.
///
/// A scan arrives some time after the sensor has read its clock: a part that is always the same,
/// and a part that varies (the line's jitter). The offset is the least difference of the last ten
/// seconds, so that the varying part drops out; ten seconds, since two clocks of 50 ppm then differ
/// by half a millisecond only. Knows no device. One thread.
class cSensorClock {
 public:
  /// Takes in a reading of the sensor's clock (24 bits of milliseconds) that arrived at `arrival`
  /// (nanoseconds). The result is the time since the reading before, in milliseconds of the
  /// sensor's clock; 0 for the first one, and for one that does not follow from it: the sensor was
  /// reset.
  std::int64_t add(std::uint32_t clock, std::int64_t arrival);

  /// When the latest reading was made, on the host's clock, nanoseconds.
  std::int64_t getStamp() const { return elapsed * NANOSECONDS_PER_MILLISECOND + getOffset(); }

  /// From the sensor's clock to the host's, nanoseconds; 0 before the first reading.
  std::int64_t getOffset() const { return offset; }

  /// Between the least and the most delay of the last ten seconds, nanoseconds.
  std::int64_t getJitter() const { return jitter; }

  static constexpr std::int64_t NANOSECONDS_PER_MILLISECOND = 1000000;

 private:
  static constexpr std::size_t SECONDS = 10;

  /// The least and the most difference of one second.
  struct cSecond {
    std::int64_t second = -1;  // of the arrival; -1: nothing in it
    std::int64_t least = 0;
    std::int64_t most = 0;
  };

  std::int64_t countPassed(std::uint32_t clock, std::int64_t arrival) const;
  void note(std::int64_t arrival, std::int64_t difference);
  void compare(std::int64_t arrival, std::int64_t difference);

  bool isStarted = false;
  std::uint32_t lastClock = 0;
  std::int64_t lastArrival = 0;
  std::int64_t elapsed = 0;  // the sensor's clock without its wraps, milliseconds
  std::array<cSecond, SECONDS> window;
  // Of the window; kept, since they are asked for several times a scan.
  std::int64_t offset = 0;
  std::int64_t jitter = 0;
};

}  // namespace tarvo
