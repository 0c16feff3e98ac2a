#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "sim/tarvosim.h"
#include "tests/support/cCaseName.h"
#include "tests/tools/cProgram.h"
#include "tests/tools/cTempFolder.h"

namespace {

cSimSetting oldSensor(eSimDialect dialect = eSimDialect::SCIP1) {
  cSimSetting setting;
  setting.dialect = dialect;
  setting.paced = false;
  return setting;
}

}  // namespace

struct cDialectCase {
  const char* name;
  eSimDialect dialect;
  const char* told;
  int last;
  int most;
};

void PrintTo(const cDialectCase& dialect, std::ostream* out) { *out << dialect.name; }

class ProgramDialectTest : public testing::TestWithParam<cDialectCase> {};

TEST_P(ProgramDialectTest, InfoSaysItAndScanTakesExactlySoMany) {
  // N + 1 scans come when the library counts them on SCIP 1.x.
  const cSimSensor sensor(oldSensor(GetParam().dialect));
  const cResult info = runProgram({"info", sensor.getPath(), "--json"});
  ASSERT_EQ(info.status, 0) << info.errors;
  const auto object = nlohmann::json::parse(info.output);
  EXPECT_EQ(object["dialect"], GetParam().told);
  EXPECT_NE(std::string(object["vendor"]).find("Simulated sensors"), std::string::npos);

  const cResult scan = runProgram({"scan", sensor.getPath(), "-n", "3", "--format", "json"});
  ASSERT_EQ(scan.status, 0) << scan.errors;
  const auto lines = linesOf(scan.output);
  ASSERT_EQ(lines.size(), 3u);
  const auto sent = sensor.getSentScans();
  for (std::size_t i = 0; i < lines.size(); ++i) {
    EXPECT_EQ(nlohmann::json::parse(lines[i])["distances"].get<std::vector<int>>(),
              sensor.getTrueDistances(sent.at(i), 44, GetParam().last, 1, GetParam().most));
  }
}

INSTANTIATE_TEST_SUITE_P(
    All, ProgramDialectTest,
    testing::Values(cDialectCase{"Scip2", eSimDialect::SCIP2, "SCIP 2.0", 725, INT_MAX},
                    cDialectCase{"Scip1", eSimDialect::SCIP1, "SCIP 1.x", 724, 4095},
                    cDialectCase{"Scip1Switch", eSimDialect::SCIP1_SWITCH,
                                 "SCIP 2.0, switched from SCIP 1.x", 725, INT_MAX}),
    cCaseName());

TEST(ProgramScip1Test, IntervalIsThePeriodOfAsManyTurns) {
  // Two turns to skip are 300 ms at the 10 turns a second of such sensors.
  const cSimSensor sensor(oldSensor());
  const cResult result = runProgram({"scan", sensor.getPath(), "--interval", "2"});
  EXPECT_EQ(result.status, 0);
  EXPECT_NE(result.errors.find("interval :0.300000[ms]"), std::string::npos) << result.errors;
}

TEST(ProgramScip1Test, GoesOnAfterAnAnswerThatDoesNotCome) {
  // The library ends an endless scan there.
  cSimSensor sensor(oldSensor());
  sensor.setFault(eSimFault::NO_ANSWER, cSimSensor::DEFAULT_VALUE, "G", 1);
  const cResult result = runProgram({"scan", sensor.getPath(), "-n", "3"});
  EXPECT_EQ(result.status, 0);
  EXPECT_NE(result.errors.find("3 scans, "), std::string::npos) << result.errors;
  EXPECT_NE(result.errors.find(" 1 dropped"), std::string::npos) << result.errors;
}

TEST(ProgramScip1Test, AnAnswerCutShortEndsItInItsOwnWords) {
  // The library ends the process by a failed assertion.
  const cTempFolder folder;
  const std::string file = folder / "scans.csv";
  std::ofstream(file) << "older";
  cSimSensor sensor(oldSensor());
  cProgram program({"scan", sensor.getPath(), "-n", "0", "--format", "csv", "-o", file});
  ASSERT_TRUE(sensor.waitForSentScans(5, std::chrono::seconds(60)));
  sensor.setFault(eSimFault::LOST_LINE, cSimSensor::DEFAULT_VALUE, "G");
  EXPECT_EQ(program.wait(), 4);
  const std::string& errors = program.getErrors();
  EXPECT_NE(errors.find("tarvolink: the sensor's answer has not the points"), std::string::npos)
      << errors;
  EXPECT_EQ(readFile(file), "older");
  const std::size_t place = errors.find(file + ".part-");
  ASSERT_NE(place, std::string::npos) << errors;
  const auto kept = linesOf(readFile(errors.substr(place, errors.find('\n', place) - place)));
  EXPECT_GT(kept.size(), 681u);
}

TEST(ProgramScip1Test, ThreeCharacterSensorIsRefusedByNameForScanning) {
  cSimSetting setting = oldSensor();
  setting.threeCharScip1 = true;
  const cSimSensor sensor(setting);
  EXPECT_EQ(runProgram({"info", sensor.getPath()}).status, 0);
  const cResult result = runProgram({"scan", sensor.getPath()});
  EXPECT_EQ(result.status, 1);
  EXPECT_NE(result.errors.find("00003,(SCIP1.0z"), std::string::npos) << result.errors;
  EXPECT_FALSE(sensor.waitForCommand("G", std::chrono::milliseconds(0)));
}
