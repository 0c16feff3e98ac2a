#include <gtest/gtest.h>

#include <csignal>

#include "sim/tarvosim.h"
#include "tests/tools/cProgram.h"
#include "tests/tools/cTempFolder.h"

namespace {

/// A scan that is to outlive its sensor's cable, by a link that follows the device.
class cLastingScan {
 public:
  explicit cLastingScan(std::vector<std::string> more = {})
      : sensor(makeSetting(folder / "sensor")), program(makeArguments(std::move(more))) {}

  cTempFolder folder;
  cSimSensor sensor;
  cProgram program;

 private:
  static cSimSetting makeSetting(const std::string& link) {
    cSimSetting setting;
    setting.rate = 50;
    setting.link = link;
    return setting;
  }

  std::vector<std::string> makeArguments(std::vector<std::string> more) const {
    more.insert(more.begin(), {"scan", folder / "sensor", "-n", "0", "--reconnect"});
    return more;
  }
};

}  // namespace

TEST(ProgramReconnectTest, GoesOnWhenTheDeviceIsBackUnderItsName) {
  cLastingScan run;
  for (int line = 0; line < 4; ++line) run.program.readLine();
  run.sensor.unplug();
  run.program.waitForError("waiting for " + (run.folder / "sensor"));
  run.sensor.plug();
  const auto scans = run.sensor.getCounters().scans;
  ASSERT_TRUE(run.sensor.waitForSentScans(scans + 5, std::chrono::seconds(60)));
  run.program.signal(SIGINT);
  EXPECT_EQ(run.program.wait(), 0) << run.program.getErrors();
  const auto lines = linesOf(run.program.getOutput());
  for (std::size_t i = 1; i < lines.size(); ++i) {
    EXPECT_EQ(std::stoul(lines[i]), i) << "scans are not counted on, or the heading comes again";
  }
  EXPECT_NE(run.program.getErrors().find(" 1 reconnects"), std::string::npos)
      << run.program.getErrors();
  EXPECT_FALSE(run.sensor.isScanning());
}

TEST(ProgramReconnectTest, SignalEndsTheWaitAndFinishesTheFile) {
  const cTempFolder place;
  const std::string file = place / "scans.csv";
  cLastingScan run({"--format", "csv", "-o", file});
  ASSERT_TRUE(run.sensor.waitForSentScans(5, std::chrono::seconds(60)));
  run.sensor.unplug();
  run.program.waitForError("waiting for ");
  run.program.signal(SIGTERM);
  EXPECT_EQ(run.program.wait(), 0) << run.program.getErrors();
  EXPECT_GT(linesOf(readFile(file)).size(), 682u);
  EXPECT_NE(run.program.getErrors().find(" 0 reconnects"), std::string::npos);
}

TEST(ProgramReconnectTest, SignalInTheSearchForALostSensorFinishesTheFile) {
  // The process ends at once there, from the middle of the library.
  const cTempFolder place;
  const std::string file = place / "scans.csv";
  cLastingScan run({"--format", "csv", "-o", file});
  ASSERT_TRUE(run.sensor.waitForSentScans(5, std::chrono::seconds(60)));
  run.sensor.setFault(eSimFault::STALL);
  run.program.waitForError("waiting for ");
  // The first search made two: the program's own and the library's.
  ASSERT_TRUE(run.sensor.waitForCommand("VV", std::chrono::seconds(60), 4));
  run.program.signal(SIGTERM);
  EXPECT_EQ(run.program.wait(), 0) << run.program.getErrors();
  EXPECT_GT(linesOf(readFile(file)).size(), 682u);
  EXPECT_NE(run.program.getErrors().find(" 0 reconnects"), std::string::npos);
}
