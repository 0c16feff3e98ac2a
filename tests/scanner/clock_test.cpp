// The offset between a sensor's clock and the host's, from numbers to numbers.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "tarvoscan/scan/cSensorClock.h"

using tarvo::cSensorClock;

namespace {

constexpr std::int64_t MS = cSensorClock::NANOSECONDS_PER_MILLISECOND;
constexpr std::int64_t DELAY = 3 * MS;  // that every record has

/// Readings of a clock, `period` milliseconds apart, on a line with jitter.
struct cLine {
  cSensorClock clock;
  std::mt19937 rng{7};
  std::int64_t sensor = 0;          // milliseconds
  std::int64_t host = 1000 * 1000;  // milliseconds, when the sensor's clock was 0

  std::int64_t read(std::int64_t period, std::int64_t jitter) {
    sensor += period;
    const auto late = std::uniform_int_distribution<std::int64_t>(0, jitter)(rng);
    return clock.add(static_cast<std::uint32_t>(sensor & 0xFFFFFF),
                     (host + sensor) * MS + DELAY + late);
  }
  /// How far the stamp is from when the clock was read.
  std::int64_t getError() const { return clock.getStamp() - (host + sensor) * MS; }
};

}  // namespace

// Catches: stamps that follow the line's jitter, or an average of it; an offset that is never
// forgotten, or too soon; milliseconds that are lost or gained at a wrap after 4 h 39 min.
TEST(SensorClock, KeepsTheLeastDelayThroughJitterAndWraps) {
  for (const std::int64_t period : {25, 100}) {
    cLine line;
    line.sensor = 0xFFFFFF - 5000;  // it wraps after five seconds
    std::int64_t least = INT64_MAX, most = INT64_MIN;
    for (int i = 0; i < 60000 / period; ++i) {
      EXPECT_EQ(line.read(period, 5 * MS), i == 0 ? 0 : period) << i;
      if (i * period < 2000) continue;
      least = std::min(least, line.getError());
      most = std::max(most, line.getError());
    }
    EXPECT_GE(least, DELAY);
    EXPECT_LE(most - least, MS) << "with a period of " << period << " ms";
    EXPECT_GT(line.clock.getJitter(), 4 * MS);
  }
}

// Catches: an offset from before a reset that stamps what comes after it; a late record, or a pause
// of hours, that is taken for a reset, and stamps that stay late after it.
TEST(SensorClock, TellsAResetFromALateRecord) {
  cLine line;
  for (int i = 0; i < 100; ++i) line.read(25, MS);
  line.host += line.sensor;  // power-cycled: its clock begins anew
  line.sensor = 0;
  EXPECT_EQ(line.read(25, 0), 0);
  EXPECT_EQ(line.getError(), DELAY);
  EXPECT_EQ(line.read(25, 0), 25);
  line.host += 8000;
  EXPECT_EQ(line.read(25, 0), 25) << "the process was stopped for 8 s";
  line.host -= 8000;
  line.sensor += 8000;
  EXPECT_EQ(line.read(25, 0), 8025) << "and has caught up";
  EXPECT_EQ(line.getError(), DELAY);
  EXPECT_EQ(line.read(5 * 3600 * 1000, 0), 5 * 3600 * 1000) << "no scan for five hours";
}
