#include <gtest/gtest.h>

#include <chrono>
#include <climits>
#include <cmath>
#include <ctime>

#include "tests/scip1/cHeldSensor.h"

namespace {

using cClock = std::chrono::steady_clock;

double secondsSince(cClock::time_point begin) {
  return std::chrono::duration<double>(cClock::now() - begin).count();
}

double getProcessorTime() {
  timespec used = {};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
  return static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) * 1e-9;
}

/// 1000 x seconds, truncated, in whole numbers: a double is its 53 bits times a power of two.
std::int64_t truncateExactly(double seconds) {
  int exponent = 0;
  const auto bits = static_cast<std::int64_t>(std::ldexp(std::frexp(seconds, &exponent), 53));
  return bits == 0 ? 0 : (bits * 1000) >> (53 - exponent);
}

class Scip1Zone : public testing::TestWithParam<const char*> {};

}  // namespace

// Catches: a period of a whole number of milliseconds that only the rounded product reaches.
TEST(Scip1Schedule, PeriodIsTheExactProductTruncated) {
  EXPECT_EQ(cSCIP12Adapter::toMilliseconds(3 * 0.1), 300);
  EXPECT_EQ(cSCIP12Adapter::toMilliseconds(43 * 0.1), 4299);
  EXPECT_EQ(cSCIP12Adapter::toMilliseconds(81 * 0.1), 8099);
  EXPECT_EQ(cSCIP12Adapter::toMilliseconds(INT_MAX * 0.1), 214748364700);
  for (int tenths = 0; tenths <= 200; ++tenths) {
    const double seconds = tenths * 0.1;
    EXPECT_EQ(cSCIP12Adapter::toMilliseconds(seconds), truncateExactly(seconds)) << tenths;
  }
}

// Catches: a wait that depends on the zone's offset: hours of it, or none at all.
TEST_P(Scip1Zone, WaitIsThePeriod) {
  setenv("TZ", GetParam(), 1);
  tzset();
  cRig rig;
  const auto begin = cClock::now();
  rig.scip2().startScan(0, 1, 1, 1, 3, 0);
  for (int number = 0; number < 4; ++number) EXPECT_EQ(rig.takeNumber(), number);
  EXPECT_GE(secondsSince(begin), 0.3 - 0.001);
  EXPECT_LT(secondsSince(begin), 10);
}

// Offsets on both sides, of half and quarter hours, summer times of both hemispheres, zones
// that have moved since 1970.
INSTANTIATE_TEST_SUITE_P(Schedule, Scip1Zone,
                         testing::Values("UTC", "Europe/London", "Europe/Berlin", "Europe/Istanbul",
                                         "America/New_York", "America/St_Johns", "Asia/Tokyo",
                                         "Asia/Kathmandu", "Australia/Sydney", "Pacific/Apia",
                                         "Pacific/Kiritimati"));

// Catches: scans that are put off, each by a period more, after one that took three periods.
TEST(Scip1Schedule, CatchesUpBackToBack) {
  cRig rig;
  rig.sensor.letGo(0);
  rig.scip2().startScan(0, 1, 1, 5, 0, 0);
  ASSERT_TRUE(rig.sensor.hears("G", 1));
  EXPECT_FALSE(rig.scip2().waitScan(1600)) << "no scan comes in three periods";
  const auto begin = cClock::now();
  rig.sensor.letGo(-1);
  ASSERT_TRUE(rig.sensor.hears("G", 4));
  EXPECT_LT(secondsSince(begin), 1);
}

// Catches: a start that waits for the period of the stopped one, or for its own before it begins.
TEST(Scip1Schedule, StartDoesNotWait) {
  for (const bool isOldSlow : {true, false}) {
    cRig rig;
    rig.sensor.letGo(0);
    rig.scip2().startScan(0, 1, 1, isOldSlow ? 36000 : 0, 0, 0);
    ASSERT_TRUE(rig.sensor.hears("G", 1));
    rig.scip2().stopAll();
    rig.scip2().startScan(0, 1, 1, isOldSlow ? 0 : 36000, 0, 0);
    rig.sensor.letGo(-1);
    EXPECT_TRUE(rig.sensor.hears("G", 2));
  }
}

// Catches: a core and standard error flooded while the cable is out.
TEST(Scip1Schedule, DeadPortIsTriedTenTimesASecond) {
  cRig rig;
  rig.scip2().startScan(0, 1, 1, 0, 2000000, 0);
  ASSERT_TRUE(rig.sensor.hears("G", 3));
  testing::internal::CaptureStderr();
  rig.sensor.unplug();
  while (rig.driver->doLaser(true) != -1) {  // until the line is dead
  }
  rig.scip2().waitScan(0);
  const auto begin = cClock::now();
  const double used = getProcessorTime();
  for (int attempt = 0; attempt < 12; ++attempt) ASSERT_TRUE(rig.scip2().waitScan(10000));
  EXPECT_GE(secondsSince(begin), 1.0);
  EXPECT_LT(getProcessorTime() - used, 0.2);
  EXPECT_TRUE(rig.scip2().isScanning());
  const std::string printed = testing::internal::GetCapturedStderr();
  EXPECT_LE(std::count(printed.begin(), printed.end(), '\n'), 20);
}
