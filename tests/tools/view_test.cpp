#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>

#include "sim/tarvosim.h"
#include "tests/support/cCaseName.h"
#include "tests/tools/cProgram.h"
#include "tests/tools/cPtyProgram.h"

namespace {

const std::string TAKE = "\x1b[?1049h";   // alternate screen
const std::string LEAVE = "\x1b[?1049l";  // and back
const std::string CURSOR = "\x1b[?25h";

cStart onTerminal(const std::string& more = "NO_COLOR=") {
  cStart start;
  start.environment = {more, "TERM=xterm-256color", "COLORTERM="};
  return start;
}

cSimSetting fastTurning() {
  cSimSetting setting;
  setting.rate = 50;
  return setting;
}

/// The live picture of a sensor, up and running.
class cRunningView {
 public:
  cRunningView() : program({"view", sensor.getPath()}, onTerminal()) {
    modes = program.getModes();
    program.waitFor(TAKE);
    program.waitFor("q quit");
    program.waitFor(" s old");
  }

  /// Whoever has the terminal next finds it as it was.
  void expectGivenBack() {
    const termios after = program.getModes();
    EXPECT_EQ(after.c_lflag, modes.c_lflag);
    EXPECT_EQ(after.c_iflag, modes.c_iflag);
    EXPECT_EQ(after.c_cc[VMIN], modes.c_cc[VMIN]);
    const std::size_t end = program.getText().rfind(LEAVE);
    ASSERT_NE(end, std::string::npos);
    EXPECT_LT(program.getText().rfind(TAKE), end) << "taken again";
    EXPECT_NE(program.getText().find(CURSOR), std::string::npos);
  }

  cSimSensor sensor{fastTurning()};
  cPtyProgram program;
  termios modes;
};

std::size_t columnsOf(const std::string& line) {
  const auto isFirst = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; };
  return static_cast<std::size_t>(std::count_if(line.begin(), line.end(), isFirst));
}

}  // namespace

TEST(ProgramViewTest, OnceIntoAPipeIsPlainTextOfTheSizeTold) {
  // Fails when escape codes get into a file, or the picture is cut to a terminal that is not there.
  cStart start = onTerminal();
  start.environment.insert(start.environment.end(), {"COLUMNS=100", "LINES=30"});
  const cSimSensor sensor(fastTurning());
  const cResult result = runProgram({"view", "--once", sensor.getPath()}, start);
  ASSERT_EQ(result.status, 0) << result.errors;
  EXPECT_EQ(result.output.find('\x1b'), std::string::npos);
  const auto lines = linesOf(result.output);
  ASSERT_EQ(lines.size(), 30u);
  for (const auto& line : lines) EXPECT_LE(columnsOf(line), 100u) << line;
  EXPECT_NE(lines[14].find("▲"), std::string::npos) << "the sensor is not in the middle";
  EXPECT_NE(result.output.find(" 2 m "), std::string::npos) << result.output;
  EXPECT_EQ(lines[28].rfind("Simulated short range scanner | SCIP 2.0 | 115200 bits/s | ", 0), 0u)
      << lines[28];
  EXPECT_NE(lines[28].find(" | 0 dropped | 0."), std::string::npos) << lines[28];
  EXPECT_EQ(lines[29].rfind("rings 2 m apart", 0), 0u) << lines[29];
  EXPECT_FALSE(sensor.isScanning());
}

TEST(ProgramViewTest, OnceTellsTheOldDialect) {
  cSimSetting setting;
  setting.dialect = eSimDialect::SCIP1;
  const cSimSensor sensor(setting);
  const cResult result = runProgram({"view", "--once", sensor.getPath()});
  ASSERT_EQ(result.status, 0) << result.errors;
  EXPECT_NE(result.output.find("| SCIP 1.x |"), std::string::npos) << result.output;
}

TEST(ProgramViewTest, OnceOnATerminalHasColoursUnlessTheyAreUnwanted) {
  cPtyProgram coloured({"view", "--once", "sim:"}, onTerminal());
  EXPECT_EQ(coloured.wait(), 0) << coloured.getText();
  EXPECT_NE(coloured.getText().find("\x1b[38;5;"), std::string::npos);
  EXPECT_EQ(coloured.getText().find(TAKE), std::string::npos) << "the picture would be gone";
  cPtyProgram plain({"view", "--once", "sim:"}, onTerminal("NO_COLOR=1"));
  EXPECT_EQ(plain.wait(), 0) << plain.getText();
  EXPECT_EQ(plain.getText().find("\x1b[38;5;"), std::string::npos);
}

TEST(ProgramViewTest, NeedsATerminalThatCanPlaceText) {
  const cResult piped = runProgram({"view", "sim:"}, onTerminal());
  EXPECT_EQ(piped.status, 1);
  EXPECT_NE(piped.errors.find("Give --once"), std::string::npos) << piped.errors;
  cStart start;
  start.environment = {"TERM=dumb"};
  cPtyProgram dumb({"view", "sim:"}, start);
  EXPECT_EQ(dumb.wait(), 1);
  EXPECT_NE(dumb.getText().find("give --once"), std::string::npos) << dumb.getText();
}

TEST(ProgramViewTest, KeysZoomFitPauseAndQuit) {
  cRunningView view;
  EXPECT_EQ(view.program.getModes().c_lflag & (ICANON | ECHO), 0u) << "keys wait for Enter";
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
  EXPECT_EQ(view.program.wait(), 0) << view.program.getText();
  view.expectGivenBack();
  EXPECT_FALSE(view.sensor.isScanning());
  const std::string& text = view.program.getText();
  EXPECT_GT(text.find(" dropped\r\n", text.rfind(LEAVE)), text.rfind(LEAVE)) << "no summary";
}

TEST(ProgramViewTest, FollowsTheSizeOfItsWindow) {
  cRunningView view;
  view.program.resize(120, 40);
  view.program.waitFor("\x1b[2J");  // else parts of the old picture stay
  view.program.waitFor("\x1b[40;1H");
  view.program.waitFor("q quit");
  view.program.resize(3, 1);  // no room for anything
  view.program.waitFor("\x1b[2J");
  view.program.type("q");
  EXPECT_EQ(view.program.wait(), 0) << view.program.getText();
}

struct cEndCase {
  const char* name;
  int signal;
  int status;
};

void PrintTo(const cEndCase& end, std::ostream* out) { *out << end.name; }

class ProgramViewEndTest : public testing::TestWithParam<cEndCase> {};

TEST_P(ProgramViewEndTest, SignalGivesTheTerminalBack) {
  cRunningView view;
  view.program.signal(GetParam().signal);
  EXPECT_EQ(view.program.wait(), GetParam().status) << view.program.getText();
  view.expectGivenBack();
}

INSTANTIATE_TEST_SUITE_P(All, ProgramViewEndTest,
                         testing::Values(cEndCase{"Int", SIGINT, 0}, cEndCase{"Term", SIGTERM, 0},
                                         cEndCase{"Hup", SIGHUP, 0},
                                         cEndCase{"Quit", SIGQUIT, -SIGQUIT},
                                         cEndCase{"Abort", SIGABRT, -SIGABRT},
                                         cEndCase{"User", SIGUSR1, -SIGUSR1}),
                         cCaseName());

TEST(ProgramViewTest, SignalGivesTheTerminalBackThoughTheSensorAnswersNoMore) {
  // Fails when the terminal is given back only after the sensor was stopped: the process ends
  // itself before.
  cRunningView view;
  view.sensor.setFault(eSimFault::STALL);
  view.program.signal(SIGTERM);
  EXPECT_EQ(view.program.wait(), 0) << view.program.getText();
  view.expectGivenBack();
}

TEST(ProgramViewTest, ScansThatStopComingEndItWithStatus4AndTheMessageStays) {
  cRunningView view;
  view.sensor.unplug();
  EXPECT_EQ(view.program.wait(), 4) << view.program.getText();
  view.expectGivenBack();
  const std::string& text = view.program.getText();
  EXPECT_GT(text.find("no scan came"), text.rfind(LEAVE)) << "said on the screen that is gone";
}

TEST(ProgramViewTest, CtrlZGivesTheTerminalToTheShellAndFgTakesIt) {
  const cSimSensor sensor(fastTurning());
  cStart start = onTerminal();
  start.path = "/bin/bash";
  cPtyProgram shell({"--norc", "--noprofile", "--noediting", "-i"}, start);
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
  EXPECT_EQ(shell.wait(), 0) << shell.getText();
}
