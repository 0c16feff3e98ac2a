// Sensors of the old dialect.
#include <nlohmann/json.hpp>

#include "tests/tools/cProgram.h"
#include "tests/tools/simSettings.h"

// Would catch a sensor left in the dialect that can do less, or reported as speaking another one.
TEST(ProgramScip1, isReportedByInfoAndSwitchedWhereItCanBe) {
  EXPECT_TRUE(holds(runProgram({"info", "sim:,scip1"}).output, "  SCIP 1.x\n"));
  EXPECT_TRUE(holds(runProgram({"info", "sim:short,scip1-switch"}).output,
                    "  SCIP 2.0, switched from SCIP 1.x\n"));
}

// Would catch a scan more than asked for, which comes when the library counts them, and a run that
// ends at the first answer that does not come, where the library ends an endless scan. Two turns to
// skip are 300 ms at the 10 turns a second of such sensors.
TEST(ProgramScip1, isScannedExactlySoOftenThoughAnAnswerDoesNotCome) {
  cSimSensor sensor(unpaced(eSimModel::SHORT_RANGE, eSimDialect::SCIP1));
  sensor.setFault(eSimFault::NO_ANSWER, cSimSensor::DEFAULT_VALUE, "G", 1);
  const cResult scan =
      runProgram({"scan", sensor.getPath(), "-n", "3", "--format", "json", "--interval", "2"});
  ASSERT_EQ(scan.status, 0) << scan.errors;
  EXPECT_TRUE(holds(scan.errors, "interval :0.300000[ms]"));
  EXPECT_TRUE(holds(scan.errors, " 1 dropped"));
  const auto lines = linesOf(scan.output);
  const auto sent = sensor.getSentScans();
  ASSERT_EQ(lines.size(), 3u);
  for (std::size_t i = 0; i < lines.size(); ++i) {
    EXPECT_EQ(nlohmann::json::parse(lines[i])["distances"],
              nlohmann::json(sensor.getTrueDistances(sent.at(i), 44, 724, 1, 4095)));
  }
}

// Would catch a process that the library ends by a failed assertion.
TEST(ProgramScip1, endsWithItsOwnMessageForAnAnswerCutShort) {
  cSimSensor sensor(unpaced(eSimModel::SHORT_RANGE, eSimDialect::SCIP1));
  cProgram program({"scan", sensor.getPath(), "-n", "0", "--format", "csv"});
  program.waitFor("\n5,");
  sensor.setFault(eSimFault::LOST_LINE, cSimSensor::DEFAULT_VALUE, "G");
  EXPECT_EQ(program.wait(), 4);
  EXPECT_TRUE(holds(program.getErrors(),
                    "tarvolink: the sensor's answer has a different number of points"));
}
