#include <gtest/gtest.h>

#include <csignal>

#include "sim/tarvosim.h"
#include "tests/support/cCaseName.h"
#include "tests/tools/cProgram.h"
#include "tests/tools/cTempFolder.h"

namespace {

cStart startOf(const std::string& example) {
  cStart start;
  start.path = EXAMPLES_PATH "/" + example;
  return start;
}

cSimSetting settingOf(eSimModel model, eSimDialect dialect) {
  cSimSetting setting;
  setting.model = model;
  setting.dialect = dialect;
  return setting;
}

const cSimSetting SHORT_RANGE = settingOf(eSimModel::SHORT_RANGE, eSimDialect::SCIP2);
const cSimSetting LONG_RANGE = settingOf(eSimModel::LONG_RANGE, eSimDialect::SCIP2);
const cSimSetting OLD = settingOf(eSimModel::SHORT_RANGE, eSimDialect::SCIP1);
const cSimSetting LEFT_RUNNING = [] {
  cSimSetting setting;
  setting.scanningAtStart = true;
  return setting;
}();

}  // namespace

struct cExampleCase {
  const char* name;
  const char* example;
  cSimSetting setting;
  std::size_t lines;
  const char* lastLine;  // its beginning
  const char* refused;   // the first command that begins so is not answered; "": none
};

void PrintTo(const cExampleCase& shown, std::ostream* out) { *out << shown.name; }

class ExampleTest : public testing::TestWithParam<cExampleCase> {};

TEST_P(ExampleTest, TakesItsScansAndStopsTheSensor) {
  cSimSensor sensor(GetParam().setting);
  if (*GetParam().refused != '\0') {
    sensor.setFault(eSimFault::NO_ANSWER, cSimSensor::DEFAULT_VALUE, GetParam().refused, 1);
  }
  const cResult result = runProgram({sensor.getPath()}, startOf(GetParam().example));
  EXPECT_EQ(result.status, 0) << result.errors;
  const auto lines = linesOf(result.output);
  ASSERT_GE(lines.size(), GetParam().lines) << result.output;  // those that wait come together
  const std::string& last = lines[GetParam().lines - 1];
  EXPECT_EQ(last.rfind(GetParam().lastLine, 0), 0u) << last;
  EXPECT_FALSE(sensor.isScanning()) << "it was left scanning";
}

INSTANTIATE_TEST_SUITE_P(
    All, ExampleTest,
    testing::Values(
        cExampleCase{"First", "first_scan", SHORT_RANGE, 5, "5: 682 points, the first ", ""},
        cExampleCase{"Continuous", "continuous_scan", LONG_RANGE, 20, "20: nearest ", ""},
        cExampleCase{"ContinuousAfterAnother", "continuous_scan", LEFT_RUNNING, 20, "20: nearest ",
                     ""},
        cExampleCase{"ContinuousScip1", "continuous_scan", OLD, 20, "20: nearest ", ""},
        cExampleCase{"Stored", "stored_scan", LONG_RANGE, 1081, "2.35619 rad: ", ""},
        cExampleCase{"StoredScip1", "stored_scan", OLD, 681, "2.0862", ""},
        cExampleCase{"Scip1", "scip1_scan", OLD, 6, "5: 681 points", ""},
        cExampleCase{"Scip1AfterAFailedScan", "scip1_scan", OLD, 6, "5: 681 points", "G"},
        cExampleCase{"Scip1WithScip2", "scip1_scan", SHORT_RANGE, 6, "5: 682 points", ""}),
    cCaseName());

TEST(TwoSensorsTest, TakesScansFromBoth) {
  const cSimSensor one(SHORT_RANGE);
  const cSimSensor other(LONG_RANGE);
  const cResult result = runProgram({one.getPath(), other.getPath()}, startOf("two_sensors"));
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_GE(linesOf(result.output).size(), 20u) << "scans that wait together come together";
  EXPECT_NE(result.output.find(one.getPath() + ", 10: 682 points\n"), std::string::npos);
  EXPECT_NE(result.output.find(other.getPath() + ", 10: 1081 points\n"), std::string::npos);
  EXPECT_FALSE(one.isScanning() || other.isScanning());
}

// Else a script takes silence for success.
TEST(FirstScanTest, FailsWhereNoScanComes) {
  cSimSensor sensor(SHORT_RANGE);
  sensor.setFault(eSimFault::WRONG_SUM, 2, "scan");
  const cResult result = runProgram({sensor.getPath()}, startOf("first_scan"));
  EXPECT_EQ(result.status, 1);
  EXPECT_NE(result.errors.find("sent no scan"), std::string::npos) << result.errors;
  EXPECT_FALSE(sensor.isScanning()) << "it was left scanning";
}

class CleanStopTest : public testing::TestWithParam<int> {};

TEST_P(CleanStopTest, LeavesTheSensorStopped) {
  const cSimSensor sensor(SHORT_RANGE);
  cProgram program({sensor.getPath()}, startOf("clean_stop"));
  EXPECT_EQ(program.readLine(), "1: 682 points");
  program.signal(GetParam());
  EXPECT_EQ(program.wait(), 0) << program.getErrors();
  EXPECT_FALSE(sensor.isScanning());
}

INSTANTIATE_TEST_SUITE_P(All, CleanStopTest, testing::Values(SIGINT, SIGTERM),
                         [](const auto& test) { return sigabbrev_np(test.param); });

class ExampleErrorTest : public testing::TestWithParam<const char*> {};

TEST_P(ExampleErrorTest, NamesTheDeviceThatHasNoSensor) {
  const std::string missing = "/dev/tty-of-nobody";
  const cResult result = runProgram({missing, missing}, startOf(GetParam()));
  EXPECT_EQ(result.status, 1);
  EXPECT_NE(result.errors.find("no sensor answers on " + missing), std::string::npos)
      << result.errors;
}

INSTANTIATE_TEST_SUITE_P(All, ExampleErrorTest, testing::Values(EXAMPLES),
                         [](const auto& test) { return std::string(test.param); });

TEST(FirstScanTest, IsWhatReadmeShows) {
  const std::string readme = readFile(SOURCE_PATH "/README.md");
  const std::string source = readFile(SOURCE_PATH "/examples/first_scan.cpp");
  ASSERT_NE(source, "");
  EXPECT_NE(readme.find("```cpp\n" + source + "```\n"), std::string::npos)
      << "the code in README.md and examples/first_scan.cpp differ";
}
