#include <gtest/gtest.h>

#include <chrono>
#include <functional>

#include "tests/scip1/cHeldSensor.h"

namespace {

constexpr int READ_TIMEOUT = 500;  // milliseconds

/// What the adapter is at when its driver goes.
struct cMoment {
  const char* name;
  std::function<void(cRig&)> bring;
};

void scan(cRig& rig, int tenths, int count) {
  rig.scip2().startScan(0, 724, 1, tenths, count, 0);
  ASSERT_TRUE(rig.sensor.hears("G", 1));
}

/// Lines without an end, for minutes at the line's speed.
std::string babble() {
  std::string lines;
  while (lines.size() < 1000000) lines += "0000\n";
  return lines;
}

const cMoment MOMENTS[] = {
    {"NeverMade", [](cRig&) {}},
    {"Idle", [](cRig& rig) { rig.scip2(); }},
    {"ScanningWithoutAnswer",
     [](cRig& rig) {
       rig.sensor.letGo(0);
       scan(rig, 0, 0);
     }},
    {"ScanningBackToBack", [](cRig& rig) { scan(rig, 0, 0); }},
    {"InTheMiddleOfAnAnswer",
     [](cRig& rig) {
       rig.sensor.script("G", "");
       scan(rig, 0, 5);
       rig.sensor.say("G00072401\n0\n0000\n");
       rig.sensor.say(babble());
       ASSERT_TRUE(rig.sensor.hasSaid(1));
     }},
    {"BabblingLine",
     [](cRig& rig) {
       rig.sensor.say(babble());
       scan(rig, 0, 5);
     }},
    {"WaitingForAnHour",
     [](cRig& rig) {
       scan(rig, 36000, 5);
       ASSERT_TRUE(rig.scip2().waitScan(10000));
     }},
    {"StoppedInAnHoursWait",
     [](cRig& rig) {
       scan(rig, 36000, 5);
       ASSERT_TRUE(rig.scip2().waitScan(10000));
       rig.scip2().stopAll();
       EXPECT_FALSE(rig.scip2().isScanning());
     }},
    {"DeadPort",
     [](cRig& rig) {
       scan(rig, 0, 1000000);
       rig.sensor.unplug();
       while (rig.driver->doLaser(true) != -1) {
       }
     }},
};

class Scip1Ending : public testing::TestWithParam<cMoment> {};

}  // namespace

// Catches: a driver whose end hangs, waits out its period, or decodes half an answer and dies.
TEST_P(Scip1Ending, TakesOneExchangeAtMost) {
  cRig rig(115200);
  rig.port->readTimeout = READ_TIMEOUT;
  GetParam().bring(rig);
  const auto begin = std::chrono::steady_clock::now();
  rig.driver.reset();
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(3));
  EXPECT_FALSE(rig.port->isInterrupted());
}

INSTANTIATE_TEST_SUITE_P(Moments, Scip1Ending, testing::ValuesIn(MOMENTS),
                         [](const auto& moment) { return moment.param.name; });
