#include <csignal>

#include "tests/support/cCaseName.h"
#include "tests/tools/cProgram.h"
#include "tests/tools/simSettings.h"

namespace {

const std::string TAKE = "\x1b[?1049h";   // alternate screen
const std::string LEAVE = "\x1b[?1049l";  // and back

/// The live picture of a sensor, up and running.
class ProgramView : public testing::Test {
 protected:
  ProgramView() {
    program.waitFor(TAKE);
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
    EXPECT_TRUE(holds(text, "\x1b[?25h")) << "the cursor is gone";
    EXPECT_TRUE(holds(text, LEAVE));
    const std::string behind = text.substr(text.rfind(LEAVE));
    EXPECT_FALSE(holds(behind, TAKE));
    return behind;
  }

  cSimSensor sensor{fastTurning()};
  cProgram program{{"view", sensor.getPath()}, {PROGRAM_PATH, {"TERM=xterm"}, true}};
  const termios modes = program.getModes();
};

}  // namespace

// Would catch escape codes in a file, a picture cut to a terminal that is not there, and a sensor
// left scanning.
TEST(ProgramViewOnce, isPlainTextOfTheSizeTold) {
  const cSimSensor sensor(fastTurning());
  const cResult result = runProgram({"view", "--once", sensor.getPath()},
                                    {PROGRAM_PATH, {"TERM=xterm", "COLUMNS=100", "LINES=30"}});
  ASSERT_EQ(result.status, 0) << result.errors;
  EXPECT_FALSE(holds(result.output, "\x1b"));
  const auto lines = linesOf(result.output);
  ASSERT_EQ(lines.size(), 30u);
  EXPECT_TRUE(holds(lines[14], "▲")) << "the sensor is not in the middle";
  EXPECT_TRUE(holds(result.output, " 2 m "));
  EXPECT_TRUE(holds(lines[28], "Simulated short range scanner | SCIP 2.0 | 115200 bits/s | "));
  EXPECT_TRUE(holds(lines[29], "rings 2 m apart"));
  EXPECT_FALSE(sensor.isScanning());
}

// Would catch keys that do nothing or something else, and a pause that shows a live picture.
TEST_F(ProgramView, zoomsFitsPausesAndQuitsByKeys) {
  program.type("+\x1b[20~");  // and a function key: its 0 and ~ are no keys
  program.waitFor("rings 1 m apart");
  program.type("-----");
  program.waitFor("rings 5 m apart");
  program.type("0");
  program.waitFor("rings 2 m apart");
  program.type(" ");
  program.waitFor("PAUSED");
  program.waitFor("0.2 s old");  // the picture ages, at 50 scans a second
  program.type("q");
  EXPECT_TRUE(holds(expectGivenBack(0), " dropped, ")) << "no summary";
  EXPECT_FALSE(sensor.isScanning());
}

// Would catch a message that goes with the picture.
TEST_F(ProgramView, endsWithStatus4WhereScansStopComingAndTheMessageStays) {
  sensor.unplug();
  EXPECT_TRUE(holds(expectGivenBack(4), "the device has gone"));
}

struct cViewEnd {
  const char* name;
  int signal;
  int status;
  bool isMute = false;  // the sensor: the process ends itself before that is stopped
};

class ProgramViewEnd : public ProgramView, public testing::WithParamInterface<cViewEnd> {};

// Would catch a shell that is left without echo and cursor.
TEST_P(ProgramViewEnd, bySignalGivesTheTerminalBack) {
  if (GetParam().isMute) sensor.setFault(eSimFault::STALL);
  program.signal(GetParam().signal);
  expectGivenBack(GetParam().status);
}

INSTANTIATE_TEST_SUITE_P(All, ProgramViewEnd,
                         testing::Values(cViewEnd{"int", SIGINT, 0}, cViewEnd{"hup", SIGHUP, 0},
                                         cViewEnd{"abort", SIGABRT, -SIGABRT},
                                         cViewEnd{"termMute", SIGTERM, 0, true}),
                         cCaseName());

// Would catch a shell that is left without echo by Ctrl-Z, and a picture that does not come back.
TEST(ProgramViewJob, leavesTheTerminalToTheShellByCtrlZAndTakesItByFg) {
  const cSimSensor sensor(fastTurning());
  cProgram shell({"--norc", "--noprofile", "--noediting", "-i"},
                 {"/bin/bash", {"TERM=xterm"}, true});
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
  shell.type("q");
  shell.waitFor(" dropped");
  shell.type("exit $?\n");
  EXPECT_EQ(shell.wait(), 0) << shell.getOutput();
}
