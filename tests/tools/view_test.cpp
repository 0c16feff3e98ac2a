#include <tuple>

#include "tests/support/settings.h"
#include "tests/tools/cProgram.h"

namespace {

const std::string TAKE = "\x1b[?1049h";   // alternate screen
const std::string LEAVE = "\x1b[?1049l";  // and back

/// The live picture of a sensor, up and running.
class cView {
 public:
  cView() {
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
    const std::string& text = program.getOutput();
    EXPECT_TRUE(holds(text, "\x1b[?25h") && holds(text, LEAVE)) << "no cursor, or no screen";
    const std::string behind = text.substr(text.rfind(LEAVE));
    EXPECT_FALSE(holds(behind, TAKE));
    return behind;
  }

  cSimSetting getSetting() const {
    cSimSetting setting = turning();
    setting.link = link;
    return setting;
  }

  const std::string link = testing::TempDir() + "view-" + std::to_string(getpid());
  cSimSensor sensor{getSetting()};
  cProgram program{{"view", link}, {PROGRAM_PATH, {"TERM=xterm"}, true}};
  const termios modes = program.getModes();
};

}  // namespace

// Would catch escape codes in a file, a picture cut to a terminal that is not there, and a sensor
// left scanning.
TEST(ProgramViewOnce, isPlainTextOfTheSizeTold) {
  const cSimSensor sensor(turning());
  const cResult result = runProgram({"view", "--once", sensor.getPath()},
                                    {PROGRAM_PATH, {"TERM=xterm", "COLUMNS=110", "LINES=30"}});
  ASSERT_EQ(result.status, 0) << result.errors;
  const auto lines = linesOf(result.output);
  ASSERT_TRUE(lines.size() == 30 && !holds(result.output, "\x1b")) << result.output;
  EXPECT_TRUE(holds(lines[14], "▲")) << "the sensor is not in the middle";
  EXPECT_TRUE(holds(lines[28], "Simulated short range scanner | SCIP 2.0 | 115200 bits/s | "));
  EXPECT_TRUE(holds(lines[29], "rings 2 m apart"));
  EXPECT_TRUE(comesToRest(sensor));
}

// Would catch keys that do nothing or something else, a pause that shows a live picture, and a
// picture that ends with the cable, does not say why it stands still, or does not move again.
TEST(ProgramView, zoomsFitsPausesAndQuitsByKeysAndOutlivesAPulledCable) {
  cView view;
  // "+" and a function key, whose 0 and ~ are no keys.
  for (const auto& [keys, shown] :
       {std::pair("+\x1b[20~", "rings 1 m"), std::pair("-----", "rings 5 m"),
        std::pair("0", "rings 2 m"), std::pair(" ", "PAUSED")}) {
    view.program.type(keys);
    view.program.waitFor(shown);
  }
  view.program.waitFor("0.2 s old");  // the picture ages, at 50 scans a second
  view.program.type(" ");
  view.sensor.unplug();
  view.program.waitFor("NO SCANS, ");
  view.program.waitFor(view.link);
  view.sensor.plug();
  view.program.waitFor("scans/s");
  view.program.type("q");
  EXPECT_TRUE(holds(view.expectGivenBack(0), " 1 reconnect\r\n")) << "no summary";
  EXPECT_TRUE(comesToRest(view.sensor));
}

// Would catch a shell that is left without echo and cursor. With a mute sensor the process ends
// itself before that is stopped.
TEST(ProgramView, givesTheTerminalBackBySignal) {
  for (const auto& [signal, status, isMute] : {std::tuple(SIGINT, 0, false),
                                               {SIGHUP, 0, false},
                                               {SIGABRT, -SIGABRT, false},
                                               {SIGTERM, 0, true}}) {
    cView view;
    if (isMute) view.sensor.setFault(eSimFault::STALL);
    view.program.signal(signal);
    view.expectGivenBack(status);
  }
}

// Would catch a shell that is left without echo by Ctrl-Z, and a picture that does not come back.
TEST(ProgramViewJob, leavesTheTerminalToTheShellByCtrlZAndTakesItByFg) {
  const cSimSensor sensor(turning());
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
