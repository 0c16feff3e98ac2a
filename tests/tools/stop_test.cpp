// How an endless scan ends: by its user, by its reader, and by its sensor.
#include <csignal>

#include "tests/support/cCaseName.h"
#include "tests/tools/cProgram.h"
#include "tests/tools/simSettings.h"

namespace {

using cClock = std::chrono::steady_clock;
constexpr std::chrono::seconds GONE{3};

}  // namespace

struct cEnding {
  const char* name;
  int signal;   // 0: its reader closes its output
  bool isMute;  // the sensor: "QT" and the abort would wait 4 s for their answers
};

class ProgramEnding : public testing::TestWithParam<cEnding> {};

// Would catch a laser left on, a row cut in its middle, and a robot that waits for a dead sensor.
TEST_P(ProgramEnding, isANormalEndAndSoon) {
  cSimSensor sensor(fastTurning());
  cProgram program({"scan", sensor.getPath(), "-n", "0"});
  for (int line = 0; line < 4; ++line) program.readLine();
  if (GetParam().isMute) sensor.setFault(eSimFault::STALL);
  const auto before = cClock::now();
  if (GetParam().signal == 0) program.closeOutput();
  program.signal(GetParam().signal);
  EXPECT_EQ(program.wait(), 0) << program.getErrors();
  EXPECT_LT(cClock::now() - before, GONE);
  EXPECT_EQ(program.getOutput().back(), '\n') << "the last row is cut";
  EXPECT_TRUE(sensor.waitForCommand("QT", std::chrono::seconds(10), 2)) << "1 at the start";
}

INSTANTIATE_TEST_SUITE_P(All, ProgramEnding,
                         testing::Values(cEnding{"int", SIGINT, false},
                                         cEnding{"term", SIGTERM, false},
                                         cEnding{"hup", SIGHUP, false}, cEnding{"pipe", 0, false},
                                         cEnding{"intMute", SIGINT, true},
                                         cEnding{"pipeMute", 0, true}),
                         cCaseName());

// Would catch a program that waits for room in a pipe that nobody reads, and the laser on.
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

// Would catch a scan that waits for ever for whole ones. One that is unplugged or says nothing any
// more, the documentation's tests have.
TEST(ProgramEnd, isStatus4WhereAllScansComeDamaged) {
  cSimSensor sensor(fastTurning());
  sensor.setFault(eSimFault::WRONG_SUM, 1, "scan");
  const cResult result = runProgram({"scan", sensor.getPath(), "-n", "0"});
  EXPECT_EQ(result.status, 4);
  EXPECT_TRUE(holds(result.errors, "sends something: all is damaged"));
}
