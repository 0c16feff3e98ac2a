#include <csignal>

#include "tests/support/cCaseName.h"
#include "tests/tools/cProgram.h"
#include "tests/tools/simSettings.h"

namespace {

const std::string TAKE = "\x1b[?1049h";   // alternate screen
const std::string LEAVE = "\x1b[?1049l";  // and back
const std::string CURSOR = "\x1b[?25h";
const std::string COLOUR = "\x1b[38;5;";

cStart onTerminal(const std::string& more = "NO_COLOR=") {
  return {{more, "TERM=xterm-256color", "COLORTERM="}, eSetting::TERMINAL};
}

/// The live picture of a sensor, up and running.
class cRunningView {
 public:
  cRunningView() : program({"view", sensor.getPath()}, onTerminal()), modes(program.getModes()) {
    program.waitFor(TAKE);
    program.waitFor("waiting for the");
    program.waitFor("q quit");
    program.waitFor(" s old");
    EXPECT_EQ(program.getModes().c_lflag & (ICANON | ECHO), 0u) << "keys wait for Enter";
  }

  /// Whoever has the terminal next finds it as it was. What the program says behind it.
  std::string expectGivenBack(int status) {
    EXPECT_EQ(program.wait(), status) << program.getOutput();
    const termios after = program.getModes();
    EXPECT_EQ(after.c_lflag, modes.c_lflag);
    EXPECT_EQ(after.c_iflag, modes.c_iflag);
    EXPECT_EQ(after.c_cc[VMIN], modes.c_cc[VMIN]);
    const std::string& text = program.getOutput();
    EXPECT_TRUE(holds(text, CURSOR));
    EXPECT_TRUE(holds(text, LEAVE));
    const std::string behind = text.substr(text.rfind(LEAVE));
    EXPECT_FALSE(holds(behind, TAKE));
    return behind;
  }

  cSimSensor sensor{fastTurning()};
  cProgram program;
  const termios modes;
};

}  // namespace

// Would catch escape codes in a file, and a picture cut to a terminal that is not there.
TEST(ProgramView, onceIntoAPipeIsPlainTextOfTheSizeTold) {
  const cSimSensor sensor(fastTurning());
  const cResult result = runProgram({"view", "--once", sensor.getPath()},
                                    {{"TERM=xterm-256color", "COLUMNS=100", "LINES=30"}});
  ASSERT_EQ(result.status, 0) << result.errors;
  EXPECT_FALSE(holds(result.output, "\x1b"));
  const auto lines = linesOf(result.output);
  ASSERT_EQ(lines.size(), 30u);
  EXPECT_TRUE(holds(lines[14], "▲")) << "the sensor is not in the middle";
  EXPECT_TRUE(holds(result.output, " 2 m "));
  const char* const status = "Simulated short range scanner | SCIP 2.0 | 115200 bits/s | ";
  EXPECT_EQ(lines[28].rfind(status, 0), 0u) << lines[28];
  EXPECT_TRUE(holds(lines[28], " | 0 dropped | 0."));
  EXPECT_EQ(lines[29].rfind("rings 2 m apart", 0), 0u) << lines[29];
  EXPECT_FALSE(sensor.isScanning());
}

TEST(ProgramView, ofOneRowIsItsStatus) {
  const cResult result = runProgram({"view", "--once", "sim:"}, {{"COLUMNS=80", "LINES=1"}});
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_EQ(linesOf(result.output).size(), 1u);
  EXPECT_TRUE(holds(result.output, " | SCIP 2.0 | 115200 bits/s | "));
}

TEST(ProgramView, onceOnATerminalHasColoursUnlessTheyAreUnwanted) {
  const cResult coloured = runProgram({"view", "--once", "sim:"}, onTerminal());
  EXPECT_EQ(coloured.status, 0);
  EXPECT_TRUE(holds(coloured.output, COLOUR));
  EXPECT_FALSE(holds(coloured.output, TAKE)) << "the picture would be gone";
  const cResult plain = runProgram({"view", "--once", "sim:"}, onTerminal("NO_COLOR=1"));
  EXPECT_EQ(plain.status, 0);
  EXPECT_FALSE(holds(plain.output, COLOUR));
}

TEST(ProgramView, needsATerminalThatCanPlaceText) {
  const cResult piped = runProgram({"view", "sim:"});
  EXPECT_EQ(piped.status, 1);
  EXPECT_TRUE(holds(piped.errors, "Give --once"));
  const cResult dumb = runProgram({"view", "sim:"}, {{"TERM=dumb"}, eSetting::TERMINAL});
  EXPECT_EQ(dumb.status, 1);
  EXPECT_TRUE(holds(dumb.output, "give --once"));
}

TEST(ProgramView, zoomsFitsPausesAndQuitsByKeys) {
  cRunningView view;
  view.program.type("\x1b[20~");  // a function key: its 0 and ~ are no keys
  view.program.type("+");
  view.program.waitFor("rings 1 m apart");
  view.program.type("-----");
  view.program.waitFor("rings 5 m apart");
  view.program.type("0");
  view.program.waitFor("rings 2 m apart");
  view.program.type(" ");
  view.program.waitFor("PAUSED");
  view.program.waitFor("0.2 s old");  // the picture ages, at 50 scans a second
  view.program.type(" ");
  view.program.waitFor("space pause");
  view.program.type("q");
  EXPECT_TRUE(holds(view.expectGivenBack(0), " dropped, ")) << "no summary";
  EXPECT_FALSE(view.sensor.isScanning());
}

TEST(ProgramView, followsTheSizeOfItsWindow) {
  cRunningView view;
  view.program.resize(120, 40);
  view.program.waitFor("\x1b[2J");  // else parts of the old picture stay
  view.program.waitFor("\x1b[40;1H");
  view.program.waitFor("q quit");
  view.program.resize(3, 1);  // no room for anything
  view.program.waitFor("\x1b[2J");
  view.program.type("q");
  view.expectGivenBack(0);
}

struct cViewEnd {
  const char* name;
  int signal;
  int status;
  bool isMute = false;  // the sensor: the process ends itself before that is stopped
};

class ProgramViewEnd : public testing::TestWithParam<cViewEnd> {};

TEST_P(ProgramViewEnd, bySignalGivesTheTerminalBack) {
  cRunningView view;
  if (GetParam().isMute) view.sensor.setFault(eSimFault::STALL);
  view.program.signal(GetParam().signal);
  view.expectGivenBack(GetParam().status);
}

INSTANTIATE_TEST_SUITE_P(All, ProgramViewEnd,
                         testing::Values(cViewEnd{"int", SIGINT, 0}, cViewEnd{"term", SIGTERM, 0},
                                         cViewEnd{"hup", SIGHUP, 0},
                                         cViewEnd{"quit", SIGQUIT, -SIGQUIT},
                                         cViewEnd{"abort", SIGABRT, -SIGABRT},
                                         cViewEnd{"user", SIGUSR1, -SIGUSR1},
                                         cViewEnd{"termMute", SIGTERM, 0, true}),
                         cCaseName());

TEST(ProgramView, endsWithStatus4WhereScansStopComingAndTheMessageStays) {
  cRunningView view;
  view.sensor.unplug();
  EXPECT_TRUE(holds(view.expectGivenBack(4), "the device has gone"));
}

TEST(ProgramView, leavesTheTerminalToTheShellByCtrlZAndTakesItByFg) {
  const cSimSensor sensor(fastTurning());
  cStart start = onTerminal();
  start.path = "/bin/bash";
  cProgram shell({"--norc", "--noprofile", "--noediting", "-i"}, start);
  shell.type("'" PROGRAM_PATH "' view " + sensor.getPath() + "\n");
  shell.waitFor(TAKE);
  shell.waitFor("q quit");
  shell.type("\x1a");
  shell.waitFor(LEAVE);
  shell.waitFor("Stopped");
  EXPECT_NE(shell.getModes().c_lflag & ECHO, 0u);
  shell.type("fg\n");
  shell.waitFor(TAKE);
  shell.waitFor("q quit");
  EXPECT_EQ(shell.getModes().c_lflag & ECHO, 0u);
  shell.type("q");
  shell.waitFor(LEAVE);
  shell.waitFor(" dropped");
  shell.type("exit $?\n");
  EXPECT_EQ(shell.wait(), 0) << shell.getOutput();
}
