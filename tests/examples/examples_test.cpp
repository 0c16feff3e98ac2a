
#include "tests/support/cCaseName.h"
#include "tests/support/settings.h"
#include "tests/support/waiting.h"
#include "tests/tools/cProgram.h"

namespace {

cStart startOf(const std::string& example, bool isOnTerminal = false) {
  return {EXAMPLES_PATH "/" + example, {}, isOnTerminal};
}

const cSimSetting SHORT_RANGE = turning(0);
const cSimSetting LONG_RANGE = turning(0, eSimDialect::SCIP2, eSimModel::LONG_RANGE);
const cSimSetting OLD = turning(0, eSimDialect::SCIP1);

struct cRow {
  const char* name;
  const char* example;
  // Its sensors, and how one of the last lines begins, or goes on behind a sensor's path.
  std::vector<std::pair<cSimSetting, std::string>> sensors;
};

class Example : public testing::TestWithParam<cRow> {};

// Catches: an example that takes no scans of a kind of sensor, or those of another sensor, ends at
// a scan that does not come or leaves the sensor scanning: those who learn from it would do the
// same.
TEST_P(Example, TakesItsScansAndStopsTheSensor) {
  std::vector<std::unique_ptr<cSimSensor>> sensors;
  std::vector<std::string> paths;
  for (const auto& [setting, line] : GetParam().sensors) {
    sensors.push_back(std::make_unique<cSimSensor>(setting));
    paths.push_back(sensors.back()->getPath());
  }
  // SCIP 1.x asks for each scan; the first time it is refused, where the example must endure that.
  const bool isRefused = GetParam().example == std::string("scip1_scan");
  if (isRefused) sensors[0]->setFault(eSimFault::NO_ANSWER, cSimSensor::DEFAULT_VALUE, "G", 1);
  const cResult result = runProgram(paths, startOf(GetParam().example));
  EXPECT_EQ(result.status, 0) << result.errors;
  for (std::size_t i = 0; i < paths.size(); ++i) {
    const std::string before = paths.size() > 1 ? paths[i] : "\n";
    EXPECT_TRUE(holds(result.output, before + GetParam().sensors[i].second));
    EXPECT_TRUE(comesToRest(*sensors[i])) << "it was left scanning";
  }
}

INSTANTIATE_TEST_SUITE_P(
    All, Example,
    testing::Values(
        cRow{"First", "first_scan", {{SHORT_RANGE, "5: 682 points, the first "}}},
        cRow{"Continuous", "continuous_scan", {{LONG_RANGE, "20: nearest "}}},
        cRow{"ContinuousScip1", "continuous_scan", {{OLD, "20: nearest "}}},
        cRow{"Stored", "stored_scan", {{LONG_RANGE, "2.35619 rad: "}}},
        cRow{"StoredScip1", "stored_scan", {{OLD, "2.0862"}}},
        cRow{"Scip1", "scip1_scan", {{OLD, "5: 681 points"}}},
        cRow{"TwoSensors",
             "two_sensors",
             {{SHORT_RANGE, ", 10: 682 points\n"}, {LONG_RANGE, ", 10: 1081 points\n"}}},
        cRow{"SeveralSensors", "several_sensors", {{turning(), ", "}, {OLD, ", "}}},
        cRow{"Commands", "commands", {{turning(), "the laser is off\nthe laser is on\n"}}}),
    cCaseName());

// Catches: a host that does not end by the key or signal that it is said to end by, or leaves the
// laser on.
TEST(EachExample, EndsByItsSignalOrByEnter) {
  for (const auto& [example, first, signal] : {std::tuple("clean_stop", "1: 682 points", SIGINT),
                                               {"clean_stop", "1: 682 points", SIGTERM},
                                               {"callback", " m", 0},
                                               {"poll_loop", " m", 0}}) {
    const cSimSensor sensor(turning());
    cProgram program({sensor.getPath()}, startOf(example, signal == 0));
    program.waitFor(first);
    signal == 0 ? program.type("\n") : program.signal(signal);
    EXPECT_EQ(program.wait(), 0) << example << program.getErrors();
    EXPECT_TRUE(comesToRest(sensor)) << example;
  }
}

// Catches: the first host that everybody copies ending by a pulled cable, silent about it, printing
// no scan once it is back, or leaving the laser on.
TEST(EachExample, PrintsThroughAPulledCableUntilCtrlC) {
  cSimSetting setting = turning();
  setting.link = testing::TempDir() + "scanner-example-" + std::to_string(getpid());
  cSimSensor sensor(setting);
  cProgram program({setting.link}, startOf("ctrl_c"));
  program.waitFor(": 682 points, the first ");
  sensor.unplug();
  program.waitForError(setting.link);
  program.skipOutput();
  sensor.plug();
  program.waitFor(": 682 points, the first ");
  program.signal(SIGINT);
  EXPECT_EQ(program.wait(), 0);
  EXPECT_TRUE(comesToRest(sensor));
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
