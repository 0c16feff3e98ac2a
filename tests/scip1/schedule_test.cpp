#include <gtest/gtest.h>

#include <algorithm>

#include "tests/scip1/cHeldSensor.h"

namespace {

using cClock = std::chrono::steady_clock;

double secondsSince(cClock::time_point begin) {
  return std::chrono::duration<double>(cClock::now() - begin).count();
}

class Scip1Zone : public testing::TestWithParam<const char*> {};

}  // namespace

// Catches: a period of a whole number of milliseconds that only the rounded product reaches.
TEST(Scip1Schedule, PeriodIsTheExactProductTruncated) {
  for (const auto& [tenths, milliseconds] :
       std::vector<std::pair<int, std::int64_t>>{{0, 0},
                                                 {3, 300},
                                                 {5, 500},
                                                 {43, 4299},
                                                 {81, 8099},
                                                 {36000, 3600000},
                                                 {INT_MAX, 214748364700}}) {
    EXPECT_EQ(cSCIP12Adapter::toMilliseconds(tenths * 0.1), milliseconds) << tenths;
  }
}

// Catches: a wait that depends on the zone's offset: hours of it, or none at all.
TEST_P(Scip1Zone, WaitIsThePeriod) {
  setenv("TZ", GetParam(), 1);
  tzset();
  cRig rig;
  const auto begin = cClock::now();
  rig.scip2().startScan(0, 1, 1, 1, 3, 0);
  for (int number = 0; number < 4; ++number) EXPECT_EQ(numberOf(takeScan(rig.scip2())), number);
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
  rig.scip2().startScan(0, 1, 1, 10, 0, 0);
  ASSERT_TRUE(rig.sensor.hears("G", 1));
  EXPECT_FALSE(rig.scip2().waitScan(3100)) << "no scan comes in three periods";
  const auto begin = cClock::now();
  rig.sensor.letGo(-1);
  ASSERT_TRUE(rig.sensor.hears("G", 4));
  EXPECT_LT(secondsSince(begin), 1.9);
}

// Catches: a core and standard error flooded while the cable is out.
TEST(Scip1Schedule, DeadPortIsTriedTenTimesASecond) {
  cRig rig;
  rig.scip2().startScan(0, 1, 1, 0, 2000000, 0);
  ASSERT_TRUE(rig.sensor.hears("G", 3));
  const std::string printed = outputOf([&] {
                                rig.sensor.unplug();
                                while (rig.driver->doLaser(true) != -1) {  // until the line is dead
                                }
                                rig.scip2().waitScan(0);
                                const auto begin = cClock::now();
                                const double used = getProcessorSeconds();
                                for (int attempt = 0; attempt < 12; ++attempt)
                                  ASSERT_TRUE(rig.scip2().waitScan(LONG));
                                EXPECT_GE(secondsSince(begin), 1.0);
                                EXPECT_LT(getProcessorSeconds() - used, 0.2);
                              }).err;
  EXPECT_TRUE(rig.scip2().isScanning());
  EXPECT_LE(std::count(printed.begin(), printed.end(), '\n'), 20);
}
