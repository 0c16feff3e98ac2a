#include <gtest/gtest.h>

#include "tests/scip1/cHeldSensor.h"
#include "tests/support/cCaseName.h"

namespace {

/// What the adapter is at when its driver goes.
struct cMoment {
  const char* name;
  std::function<void(cRig&)> bring;
};

void PrintTo(const cMoment& moment, std::ostream* out) { *out << moment.name; }

void scan(cRig& rig, int tenths, int count) {
  rig.scip2().startScan(0, 724, 1, tenths, count, 0);
  ASSERT_TRUE(rig.sensor.hears("G", 1));
}

/// Lines without an end, for minutes at the line's speed.
void babble(cRig& rig) {
  std::string lines;
  while (lines.size() < 1000000) lines += "0000\n";
  rig.sensor.say(lines);
}

void scanWithoutAnswer(cRig& rig) {
  rig.sensor.letGo(0);
  scan(rig, 0, 0);
}

void getHalfAnAnswer(cRig& rig) {
  rig.sensor.script("G", "G00072401\n0\n0000\n");
  scan(rig, 0, 5);
  babble(rig);
  ASSERT_TRUE(rig.sensor.hasSaid(1));
}

void waitForAnHour(cRig& rig) {
  scan(rig, 36000, 5);
  ASSERT_TRUE(rig.scip2().waitScan(LONG));
}

void scanOnDeadPort(cRig& rig) {
  scan(rig, 0, 1000000);
  rig.sensor.unplug();
  while (rig.driver->doLaser(true) != -1) {
  }
}

class Scip1Ending : public testing::TestWithParam<cMoment> {};

}  // namespace

// Catches: a driver whose end hangs, waits out its period, or decodes half an answer and dies.
TEST_P(Scip1Ending, TakesOneExchangeAtMost) {
  cRig rig(115200);
  rig.port->readTimeout = 2000;  // no machine is so busy that the babble pauses for longer
  GetParam().bring(rig);
  const auto begin = std::chrono::steady_clock::now();
  rig.driver.reset();
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
  EXPECT_FALSE(rig.port->isInterrupted());
}

INSTANTIATE_TEST_SUITE_P(Moments, Scip1Ending,
                         testing::Values(cMoment{"NeverMade", [](cRig&) {}},
                                         cMoment{"Idle", [](cRig& rig) { rig.scip2(); }},
                                         cMoment{"BackToBack", [](cRig& rig) { scan(rig, 0, 0); }},
                                         cMoment{"WithoutAnswer", scanWithoutAnswer},
                                         cMoment{"InTheMiddleOfAnAnswer", getHalfAnAnswer},
                                         cMoment{"WaitingForAnHour", waitForAnHour},
                                         cMoment{"DeadPort", scanOnDeadPort}),
                         cCaseName());
