#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>

#include "tests/support/settings.h"
#include "tests/support/waiting.h"
#include "tests/tools/cProgram.h"

namespace {

cStart startOf(const std::string& example, bool isOnTerminal = false) {
  cStart start{EXAMPLES_PATH "/" + example};
  start.isOnTerminal = isOnTerminal;
  return start;
}

}  // namespace

// Catches: the first host that everybody copies ending by a pulled cable, silent about it, printing
// no scan once it is back, or leaving the laser on.
TEST(ScannerExample, PrintsThroughAPulledCableUntilCtrlC) {
  cSimSetting setting = turning();
  setting.link = testing::TempDir() + "scanner-example-" + std::to_string(getpid());
  cSimSensor sensor(setting);
  cProgram program({setting.link}, startOf("ctrl_c"));
  program.waitFor(": 682 points, the first ");
  sensor.unplug();
  program.waitForError(setting.link);
  program.skipOutput();
  sensor.plug();
  program.waitFor(": 682 points, the first ");
  program.signal(SIGINT);
  EXPECT_EQ(program.wait(), 0);
  EXPECT_TRUE(comesToRest(sensor));
}

// Catches: a host that does not end by the key that it is said to end by, or leaves the laser on.
TEST(ScannerExample, EndsByEnter) {
  for (const char* example : {"callback", "poll_loop"}) {
    const cSimSensor sensor(turning());
    cProgram program({sensor.getPath()}, startOf(example, true));
    program.waitFor(" m");
    program.type("\n");
    EXPECT_EQ(program.wait(), 0) << example;
    EXPECT_TRUE(comesToRest(sensor)) << example;
  }
}

// Catches: scans of one sensor alone; commands that fail on a sensor that is well.
TEST(ScannerExample, DoesWhatItShows) {
  const cSimSensor one(turning());
  const cSimSensor other(turning(50, eSimDialect::SCIP1));
  const cResult both = runProgram({one.getPath(), other.getPath()}, startOf("several_sensors"));
  EXPECT_EQ(both.status, 0) << both.errors;
  EXPECT_TRUE(holds(both.output, one.getPath() + ", "));
  EXPECT_TRUE(holds(both.output, other.getPath() + ", "));
  const cResult asked = runProgram({one.getPath()}, startOf("commands"));
  EXPECT_EQ(asked.status, 0) << asked.output << asked.errors;
  EXPECT_TRUE(holds(asked.output, "\nthe laser is off\nthe laser is on\n"));
  EXPECT_TRUE(comesToRest(one));
}
