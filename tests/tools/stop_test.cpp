// How a run ends: by its user, by its reader, and by its options. What its sensor does to it, the
// documentation's tests have.
#include <tuple>

#include "tests/support/cPtyPair.h"
#include "tests/tools/cProgram.h"

using cClock = std::chrono::steady_clock;
constexpr std::chrono::seconds GONE{3};

// Would catch a laser left on, a row cut in its middle, a robot that waits for a dead sensor, and a
// shell's loop that goes on after Ctrl-C.
TEST(ProgramEnd, isSoonAndBySignalIfItCutsARunShort) {
  // A signal (0: its reader closes its output). With a mute sensor "QT" and the abort would wait
  // 4 s for their answers.
  for (const auto& [count, signal, status, isMute] : {std::tuple("0", SIGTERM, 0, false),
                                                      {"0", SIGHUP, 0, false},
                                                      {"0", SIGINT, 0, true},
                                                      {"0", 0, 0, true},
                                                      {"5000", SIGINT, -SIGINT, false},
                                                      {"5000", 0, -SIGPIPE, false},
                                                      {"5000", SIGTERM, -SIGTERM, true}}) {
    cSimSensor sensor(turning());
    cProgram program({"scan", sensor.getPath(), "-n", count});
    for (int line = 0; line < 4; ++line) program.readLine();
    if (isMute) sensor.setFault(eSimFault::STALL);
    const auto before = cClock::now();
    if (signal == 0) program.closeOutput();
    program.signal(signal);
    EXPECT_EQ(program.wait(), status) << program.getErrors();
    EXPECT_LT(cClock::now() - before, GONE);
    EXPECT_EQ(program.getOutput().back(), '\n') << "the last row is cut";
    EXPECT_TRUE(sensor.waitForCommand("QT", std::chrono::seconds(10), 2)) << "1 at the start";
  }
}

// Would catch a run that goes on, or is cut short by its own end.
TEST(ProgramEnd, comesWhenItsDurationIsOverOrItsScansAreTaken) {
  const cSimSensor sensor(turning());
  const std::string& path = sensor.getPath();
  const cResult timed = runProgram({"scan", path, "--duration", "0.5"});
  EXPECT_TRUE(timed.status == 0 && linesOf(timed.output).size() > 5) << timed.errors;
  EXPECT_EQ(linesOf(runProgram({"scan", path, "-n", "3", "--duration", "1e6"}).output).size(), 4u);
  cProgram view({"view", path, "--duration", "0.5"}, {PROGRAM_PATH, {"TERM=xterm"}, true});
  EXPECT_EQ(view.wait(), 0) << view.getOutput();
}

// Would catch a laser that stays on.
TEST(ProgramStop, turnsALaserOffInBothDialects) {
  for (const auto& [dialect, on, off] :
       {std::tuple(eSimDialect::SCIP2, "BM", "QT"), std::tuple(eSimDialect::SCIP1, "L0", "L1")}) {
    const cSimSensor sensor(turning(0, dialect));
    std::ofstream(sensor.getPath()) << on << "\n";
    ASSERT_TRUE(sensor.waitForCommand(on, std::chrono::seconds(60)));
    const cResult result = runProgram({"stop", sensor.getPath()});
    EXPECT_TRUE(result.status == 0 && holds(result.errors, sensor.getPath() + " is off\n"));
    EXPECT_EQ(sensor.getCommands().back().rfind(off, 0), 0u) << sensor.getCommands().back();
  }
}

// Would catch a program that waits for room in a pipe that nobody reads, and the laser on.
TEST(ProgramEnd, comesSoonThoughNobodyReadsItsOutput) {
  cSimSensor sensor(turning(0));  // more than a pipe holds, at once
  cProgram program({"scan", sensor.getPath(), "-n", "0", "--format", "csv"});
  ASSERT_TRUE(sensor.waitForSentScans(100, std::chrono::seconds(60)));
  program.signal(SIGINT);
  const auto before = cClock::now();
  ASSERT_TRUE(sensor.waitForCommand("QT", std::chrono::seconds(10), 2)) << "one before the scan";
  EXPECT_LT(cClock::now() - before, GONE);
  EXPECT_EQ(program.wait(), 0) << program.getErrors();
}

// Would catch a robot's shutdown that waits for the minute of a search.
TEST(ProgramSearch, endsAtOnceByASignalOrWhereNobodyReads) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, 0}) {
    const cPtyPair line;
    cProgram program({"scan", line.getPath()});
    program.waitForError("looking for a sensor");
    const auto before = cClock::now();
    if (signal == 0) program.closeOutput();
    program.signal(signal);
    EXPECT_EQ(program.wait(), signal == 0 ? -SIGPIPE : -signal);
    EXPECT_LT(cClock::now() - before, GONE);
  }
}
