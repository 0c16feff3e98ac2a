// Sensors of the old dialect.
#include <nlohmann/json.hpp>

#include "tests/tools/cProgram.h"
#include "tests/tools/cTempFolder.h"
#include "tests/tools/simSettings.h"

using nlohmann::json;

namespace {

cSimSetting oldSensor(eSimDialect dialect = eSimDialect::SCIP1) {
  return unpaced(eSimModel::SHORT_RANGE, dialect);
}

}  // namespace

TEST(ProgramScip1, isToldByInfoAndSwitchedWhereItCanBe) {
  for (const auto& [dialect, told] :
       {std::pair(eSimDialect::SCIP1, "SCIP 1.x"),
        std::pair(eSimDialect::SCIP1_SWITCH, "SCIP 2.0, switched from SCIP 1.x")}) {
    const cSimSensor sensor(oldSensor(dialect));
    const cResult info = runProgram({"info", sensor.getPath(), "--json"});
    ASSERT_EQ(info.status, 0) << info.errors;
    EXPECT_EQ(json::parse(info.output)["dialect"], told);
    EXPECT_TRUE(holds(json::parse(info.output)["vendor"], "Simulated sensors"));
  }
}

// N + 1 scans come when the library counts them. Two turns to skip are 300 ms at the 10 turns a
// second of such sensors.
TEST(ProgramScip1, isScannedExactlySoOftenWithAnIntervalOfAsManyTurns) {
  const cSimSensor sensor(oldSensor());
  const cResult scan =
      runProgram({"scan", sensor.getPath(), "-n", "3", "--format", "json", "--interval", "2"});
  ASSERT_EQ(scan.status, 0) << scan.errors;
  EXPECT_TRUE(holds(scan.errors, "interval :0.300000[ms]"));
  const auto lines = linesOf(scan.output);
  ASSERT_EQ(lines.size(), 3u);
  for (std::size_t i = 0; i < lines.size(); ++i) {
    EXPECT_EQ(json::parse(lines[i])["distances"].get<std::vector<int>>(),
              sensor.getTrueDistances(sensor.getSentScans().at(i), 44, 724, 1, 4095));
  }
}

// The library ends an endless scan there.
TEST(ProgramScip1, goesOnAfterAnAnswerThatDoesNotCome) {
  cSimSensor sensor(oldSensor());
  sensor.setFault(eSimFault::NO_ANSWER, cSimSensor::DEFAULT_VALUE, "G", 1);
  const cResult result = runProgram({"scan", sensor.getPath(), "-n", "3"});
  EXPECT_EQ(result.status, 0);
  EXPECT_TRUE(holds(result.errors, "3 scans, "));
  EXPECT_TRUE(holds(result.errors, " 1 dropped"));
}

// The library ends the process by a failed assertion.
TEST(ProgramScip1, endsInItsOwnWordsForAnAnswerCutShort) {
  const cTempFolder folder;
  const std::string file = folder / "scans.csv";
  std::ofstream(file) << "older";
  cSimSensor sensor(oldSensor());
  cProgram program({"scan", sensor.getPath(), "-n", "0", "--format", "csv", "-o", file});
  const std::string part = file + ".part-" + std::to_string(program.getPid());
  ASSERT_TRUE(sensor.waitForSentScans(5, std::chrono::seconds(60)));
  sensor.setFault(eSimFault::LOST_LINE, cSimSensor::DEFAULT_VALUE, "G");
  EXPECT_EQ(program.wait(), 4);
  EXPECT_TRUE(holds(program.getErrors(), "tarvolink: the sensor's answer has not the points"));
  EXPECT_EQ(readFile(file), "older");
  EXPECT_TRUE(holds(program.getErrors(), part));
  EXPECT_GT(linesOf(readFile(part)).size(), 681u);
}

TEST(ProgramScip1, refusesByNameToScanWithThreeCharacters) {
  cSimSetting setting = oldSensor();
  setting.threeCharScip1 = true;
  const cSimSensor sensor(setting);
  EXPECT_EQ(runProgram({"info", sensor.getPath()}).status, 0);
  const cResult result = runProgram({"scan", sensor.getPath()});
  EXPECT_EQ(result.status, 1);
  EXPECT_TRUE(holds(result.errors, "00003,(SCIP1.0z"));
  EXPECT_FALSE(sensor.waitForCommand("G", std::chrono::milliseconds(0)));
}
