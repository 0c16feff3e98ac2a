#include <gtest/gtest.h>

#include "tests/scip1/cHeldRig.h"

namespace {

using cClock = std::chrono::steady_clock;

double secondsSince(cClock::time_point begin) {
  return std::chrono::duration<double>(cClock::now() - begin).count();
}

}  // namespace

// Catches: a period of a whole number of milliseconds that only the rounded product reaches.
TEST(Scip1Schedule, PeriodIsTheExactProductTruncated) {
  using tRow = std::pair<int, std::int64_t>;
  for (const auto& [tenths, milliseconds] :
       {tRow{0, 0}, tRow{3, 300}, tRow{43, 4299}, tRow{81, 8099}, tRow{36000, 3600000},
        tRow{INT_MAX, 214748364700}}) {
    EXPECT_EQ(cSCIP12Adapter::toMilliseconds(tenths * 0.1), milliseconds) << tenths;
  }
}

// Catches: a wait that depends on the zone's offset: hours of it, or none at all.
TEST(Scip1Schedule, WaitIsThePeriodInEveryZone) {
  // Offsets on both sides, of half and quarter hours, with and without summer time.
  for (const char* zone : {"UTC", "Europe/London", "America/St_Johns", "Asia/Kathmandu",
                           "Australia/Sydney", "Pacific/Kiritimati"}) {
    setenv("TZ", zone, 1);
    tzset();
    cHeldRig rig;
    const auto begin = cClock::now();
    rig.scip2().startScan(0, 1, 1, 1, 3, 0);
    for (int number = 0; number < 4; ++number) EXPECT_EQ(numberOf(takeScan(rig.scip2())), number);
    EXPECT_GE(secondsSince(begin), 0.3 - 0.001) << zone;
    EXPECT_LT(secondsSince(begin), 10) << zone;
  }
}

// Catches: scans that are put off, each by a period more, after one that took three periods.
TEST(Scip1Schedule, CatchesUpBackToBack) {
  cHeldRig rig;
  rig.letGo(0);
  rig.scip2().startScan(0, 1, 1, 10, 0, 0);
  ASSERT_TRUE(rig.hears("G", 1));
  EXPECT_FALSE(rig.scip2().waitScan(3100)) << "no scan comes in three periods";
  const auto begin = cClock::now();
  rig.letGo(-1);
  ASSERT_TRUE(rig.hears("G", 4));
  EXPECT_LT(secondsSince(begin), 1.9);
}

// Catches: a driver whose end hangs, waits out its period, or decodes half an answer and dies.
TEST(Scip1Schedule, EndTakesOneExchangeAtMost) {
  for (const bool isInAnAnswer : {false, true}) {
    cHeldRig rig(115200);
    rig.port->readTimeout = 2000;  // no machine is so busy that the babble pauses for longer
    if (isInAnAnswer) {
      rig.script("G", "G00000101\n0\n0000\n");
      std::string endless;  // lines, for minutes at the line's speed
      while (endless.size() < 1000000) endless += "0000\n";
      rig.startTwoPoints(5);
      ASSERT_TRUE(rig.sensor.waitFor(&cSimCounters::records, 1, LONG_TIME));
      rig.sensor.say(endless);
    } else {
      rig.scip2().startScan(0, 1, 1, 36000, 5, 0);  // one an hour
      ASSERT_TRUE(rig.scip2().waitScan(LONG));
      EXPECT_FALSE(rig.scip2().waitScan(100));
    }
    const auto begin = cClock::now();
    rig.driver.reset();
    EXPECT_LT(secondsSince(begin), 10);
    EXPECT_FALSE(rig.port->isInterrupted());
  }
}
