#include <gtest/gtest.h>

#include <csignal>

#include "tests/support/cCaseName.h"
#include "tests/support/settings.h"
#include "tests/tools/cProgram.h"

namespace {

cStart startOf(const std::string& example) { return {EXAMPLES_PATH "/" + example}; }

const cSimSetting SHORT_RANGE = turning(0);
const cSimSetting LONG_RANGE = turning(0, eSimDialect::SCIP2, eSimModel::LONG_RANGE);
const cSimSetting OLD = turning(0, eSimDialect::SCIP1);

struct cRow {
  const char* name;
  const char* example;
  cSimSetting setting;
  const char* line;  // how one of its last begins
};

class Example : public testing::TestWithParam<cRow> {};

// Catches: an example that takes no scans of a kind of sensor, ends at a scan that does not come
// or leaves the sensor scanning: those who learn from it would do the same.
TEST_P(Example, TakesItsScansAndStopsTheSensor) {
  cSimSensor sensor(GetParam().setting);
  // SCIP 1.x asks for each scan; the first time it is refused, where the example must endure that.
  const bool isRefused = GetParam().example == std::string("scip1_scan");
  if (isRefused) sensor.setFault(eSimFault::NO_ANSWER, cSimSensor::DEFAULT_VALUE, "G", 1);
  const cResult result = runProgram({sensor.getPath()}, startOf(GetParam().example));
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_TRUE(holds(result.output, std::string("\n") + GetParam().line));
  EXPECT_FALSE(sensor.isScanning()) << "it was left scanning";
}

INSTANTIATE_TEST_SUITE_P(
    All, Example,
    testing::Values(cRow{"First", "first_scan", SHORT_RANGE, "5: 682 points, the first "},
                    cRow{"Continuous", "continuous_scan", LONG_RANGE, "20: nearest "},
                    cRow{"ContinuousScip1", "continuous_scan", OLD, "20: nearest "},
                    cRow{"Stored", "stored_scan", LONG_RANGE, "2.35619 rad: "},
                    cRow{"StoredScip1", "stored_scan", OLD, "2.0862"},
                    cRow{"Scip1", "scip1_scan", OLD, "5: 681 points"}),
    cCaseName());

// Catches: scans that one sensor's driver takes from the other's.
TEST(TwoSensors, TakesScansFromBoth) {
  const cSimSensor one(SHORT_RANGE);
  const cSimSensor other(LONG_RANGE);
  const cResult result = runProgram({one.getPath(), other.getPath()}, startOf("two_sensors"));
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_TRUE(holds(result.output, one.getPath() + ", 10: 682 points\n"));
  EXPECT_TRUE(holds(result.output, other.getPath() + ", 10: 1081 points\n"));
  EXPECT_FALSE(one.isScanning() || other.isScanning());
}

// Catches: silence that a script takes for success.
TEST(FirstScan, FailsWhereNoScanComes) {
  cSimSensor sensor(SHORT_RANGE);
  sensor.setFault(eSimFault::WRONG_SUM, 2, "scan");
  const cResult result = runProgram({sensor.getPath()}, startOf("first_scan"));
  EXPECT_EQ(result.status, 1);
  EXPECT_TRUE(holds(result.errors, "sent no scan"));
}

// Catches: a laser left on by Ctrl-C, or by the end of a service.
TEST(CleanStop, LeavesTheSensorStopped) {
  for (const int signal : {SIGINT, SIGTERM}) {
    const cSimSensor sensor(SHORT_RANGE);
    cProgram program({sensor.getPath()}, startOf("clean_stop"));
    EXPECT_EQ(program.readLine(), "1: 682 points");
    program.signal(signal);
    EXPECT_EQ(program.wait(), 0) << program.getErrors();
    EXPECT_FALSE(sensor.isScanning());
  }
}

// Catches: an example that goes on without a sensor, and ends by an empty pointer.
TEST(EachExample, NamesTheDeviceThatHasNoSensor) {
  for (const char* example : {EXAMPLES}) {
    const cResult result = runProgram({"/dev/no-tty", "/dev/no-tty"}, startOf(example));
    EXPECT_EQ(result.status, 1) << example;
    EXPECT_TRUE(holds(result.errors, "no sensor answers on /dev/no-tty")) << example;
  }
}

}  // namespace
