// How an endless scan ends: by its user, by its reader, and by its sensor.
#include <csignal>

#include "tests/support/cCaseName.h"
#include "tests/tools/cProgram.h"
#include "tests/tools/simSettings.h"

namespace {

using cClock = std::chrono::steady_clock;
constexpr std::chrono::seconds GONE{3};

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

struct cEnding {
  const char* name;
  void (*begin)(cProgram& program);
  bool isMute;  // the sensor: "QT" and the abort would wait 4 s for their answers
};

class ProgramEnding : public testing::TestWithParam<cEnding> {};

TEST_P(ProgramEnding, isANormalEndAndSoon) {
  cRunningScan run;
  if (GetParam().isMute) run.sensor.setFault(eSimFault::STALL);
  const auto before = cClock::now();
  GetParam().begin(run.program);
  EXPECT_EQ(run.program.wait(), 0) << run.program.getErrors();
  EXPECT_LT(cClock::now() - before, GONE);
  EXPECT_EQ(run.program.getOutput().back(), '\n') << "the last row is cut";
  if (GetParam().isMute) {
    EXPECT_TRUE(run.sensor.waitForCommand("QT", std::chrono::seconds(10), 2)) << "1 at the start";
  } else {
    EXPECT_FALSE(run.sensor.isScanning());
  }
}

INSTANTIATE_TEST_SUITE_P(
    All, ProgramEnding,
    testing::Values(cEnding{"int", [](cProgram& program) { program.signal(SIGINT); }, false},
                    cEnding{"term", [](cProgram& program) { program.signal(SIGTERM); }, false},
                    cEnding{"hup", [](cProgram& program) { program.signal(SIGHUP); }, false},
                    cEnding{"pipe", [](cProgram& program) { program.closeOutput(); }, false},
                    cEnding{"intMute", [](cProgram& program) { program.signal(SIGINT); }, true},
                    cEnding{"pipeMute", [](cProgram& program) { program.closeOutput(); }, true}),
    cCaseName());

TEST(ProgramEnd, comesSoonThoughNobodyReadsItsOutput) {
  cSimSensor sensor(unpaced());  // more than a pipe holds, at once
  cProgram program({"scan", sensor.getPath(), "-n", "0", "--format", "csv"});
  ASSERT_TRUE(sensor.waitForSentScans(100, std::chrono::seconds(60)));
  program.signal(SIGINT);
  const auto before = cClock::now();
  ASSERT_TRUE(sensor.waitForCommand("QT", std::chrono::seconds(10), 2)) << "one before the scan";
  EXPECT_LT(cClock::now() - before, GONE);
  EXPECT_EQ(program.wait(), 0) << program.getErrors();
}

struct cTrouble {
  const char* name;
  void (*begin)(cSimSensor& sensor);
  const char* said;
};

class ProgramTrouble : public testing::TestWithParam<cTrouble> {};

// Wrong counts, the simulated sensor's own test has. As a session leader, which gets the port as
// its terminal, and SIGHUP when that goes.
TEST_P(ProgramTrouble, isStatus4AndWhatIsKnown) {
  cRunningScan run({{}, eSetting::SESSION});
  const auto before = cClock::now();
  GetParam().begin(run.sensor);
  run.program.waitForError(GetParam().said);
  EXPECT_LT(cClock::now() - before, std::chrono::seconds(5)) << "\"QT\" and the abort take 4 s";
  EXPECT_EQ(run.program.wait(std::chrono::seconds(30)), 4);
  EXPECT_TRUE(holds(run.program.getErrors(), " scans, ")) << "no summary";
}

INSTANTIATE_TEST_SUITE_P(
    All, ProgramTrouble,
    testing::Values(
        cTrouble{"unplugged", [](cSimSensor& sensor) { sensor.unplug(); }, "the device has gone"},
        cTrouble{"silent", [](cSimSensor& sensor) { sensor.setFault(eSimFault::STALL); },
                 "no scan came for 2 s: the sensor says nothing any more"},
        cTrouble{"wrongSums",
                 [](cSimSensor& sensor) { sensor.setFault(eSimFault::WRONG_SUM, 1, "scan"); },
                 "sends something: all is damaged, and its latest answer has the status 99"},
        cTrouble{"cutShort",
                 [](cSimSensor& sensor) { sensor.setFault(eSimFault::CUT_SHORT, 30, "scan"); },
                 "sends something: all is damaged"}),
    cCaseName());
