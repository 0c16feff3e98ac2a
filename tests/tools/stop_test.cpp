#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <functional>

#include "sim/tarvosim.h"
#include "tests/support/cCaseName.h"
#include "tests/tools/cProgram.h"

namespace {

using cClock = std::chrono::steady_clock;
constexpr std::chrono::seconds GONE{3};

cSimSetting fastTurning() {
  cSimSetting setting;
  setting.rate = 50;
  return setting;
}

/// A program in the middle of an endless scan.
class cRunningScan {
 public:
  explicit cRunningScan(const cStart& start = {})
      : program({"scan", sensor.getPath(), "-n", "0"}, start) {
    for (int line = 0; line < 4; ++line) program.readLine();
  }

  cSimSensor sensor{fastTurning()};
  cProgram program;
};

}  // namespace

class ProgramSignalTest : public testing::TestWithParam<int> {};

TEST_P(ProgramSignalTest, StopsTheSensorAndEndsWell) {
  cRunningScan run;
  const auto before = cClock::now();
  run.program.signal(GetParam());
  EXPECT_EQ(run.program.wait(), 0) << run.program.getErrors();
  EXPECT_LT(cClock::now() - before, GONE);
  EXPECT_FALSE(run.sensor.isScanning());
  EXPECT_EQ(run.program.getOutput().back(), '\n') << "the last row is cut";
}

INSTANTIATE_TEST_SUITE_P(All, ProgramSignalTest, testing::Values(SIGINT, SIGTERM, SIGHUP),
                         [](const auto& test) { return sigabbrev_np(test.param); });

TEST(ProgramStopTest, SignalEndsItThoughTheSensorAnswersNoMore) {
  // "QT" and the abort would wait 4 s for their answers.
  cRunningScan run;
  run.sensor.setFault(eSimFault::STALL);
  const auto before = cClock::now();
  run.program.signal(SIGINT);
  EXPECT_EQ(run.program.wait(), 0) << run.program.getErrors();
  EXPECT_LT(cClock::now() - before, GONE);
  EXPECT_TRUE(run.sensor.waitForCommand("QT", std::chrono::seconds(10)));
}

TEST(ProgramStopTest, SignalEndsItThoughNobodyReadsItsOutput) {
  cSimSetting setting;
  setting.paced = false;  // more than a pipe holds, at once
  cSimSensor sensor(setting);
  cProgram program({"scan", sensor.getPath(), "-n", "0", "--format", "csv"});
  ASSERT_TRUE(sensor.waitForSentScans(100, std::chrono::seconds(60)));
  program.signal(SIGINT);
  const auto before = cClock::now();
  ASSERT_TRUE(sensor.waitForCommand("QT", std::chrono::seconds(10), 2)) << "one before the scan";
  EXPECT_LT(cClock::now() - before, GONE);
  EXPECT_EQ(program.wait(), 0) << program.getErrors();
}

TEST(ProgramStopTest, ClosedPipeIsANormalEnd) {
  cRunningScan run;
  run.program.closeOutput();
  EXPECT_EQ(run.program.wait(), 0) << run.program.getErrors();
  EXPECT_FALSE(run.sensor.isScanning());
}

TEST(ProgramStopTest, ClosedPipeEndsItThoughTheSensorAnswersNoMore) {
  cRunningScan run;
  run.sensor.setFault(eSimFault::STALL);
  run.program.closeOutput();
  const auto before = cClock::now();
  EXPECT_EQ(run.program.wait(), 0) << run.program.getErrors();
  EXPECT_LT(cClock::now() - before, GONE);
}

struct cTroubleCase {
  const char* name;
  std::function<void(cSimSensor&)> begin;
  const char* said;
};

void PrintTo(const cTroubleCase& trouble, std::ostream* out) { *out << trouble.name; }

class ProgramTroubleTest : public testing::TestWithParam<cTroubleCase> {};

TEST_P(ProgramTroubleTest, ScansThatStopComingEndItWithStatus4AndWhatIsKnown) {
  // As a session leader, which gets the port as its terminal, and SIGHUP when that goes.
  cStart start;
  start.leadsSession = true;
  cRunningScan run(start);
  GetParam().begin(run.sensor);
  EXPECT_EQ(run.program.wait(), 4);
  const std::string& errors = run.program.getErrors();
  EXPECT_NE(errors.find(GetParam().said), std::string::npos) << errors;
  EXPECT_NE(errors.find(" scans, "), std::string::npos) << "no summary: " << errors;
}

INSTANTIATE_TEST_SUITE_P(
    All, ProgramTroubleTest,
    testing::Values(
        cTroubleCase{"Unplugged", [](cSimSensor& sensor) { sensor.unplug(); },
                     "the device has gone"},
        cTroubleCase{"Silent", [](cSimSensor& sensor) { sensor.setFault(eSimFault::STALL); },
                     "no scan came for 2 s: the sensor says nothing any more"},
        cTroubleCase{"WrongCounts",
                     [](cSimSensor& sensor) { sensor.setFault(eSimFault::WRONG_COUNT, 2, "scan"); },
                     " were dropped so far"},
        cTroubleCase{"WrongSums",
                     [](cSimSensor& sensor) { sensor.setFault(eSimFault::WRONG_SUM, 1, "scan"); },
                     "its latest answer has the status 99"}),
    cCaseName());
