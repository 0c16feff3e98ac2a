#include <csignal>

#include "sim/tarvosim.h"
#include "tests/tools/cProgram.h"
#include "tests/tools/cTempFolder.h"
#include "tests/tools/simSettings.h"

namespace {

/// A scan that is to outlive its sensor's cable, by a link that follows the device.
class ProgramReconnect : public testing::Test {
 protected:
  static constexpr std::chrono::seconds PATIENCE{60};

  void SetUp() override { ASSERT_TRUE(sensor.waitForSentScans(5, PATIENCE)); }

  void expectEndBySignal() {
    program.signal(SIGTERM);
    EXPECT_EQ(program.wait(), 0) << program.getErrors();
    EXPECT_GT(linesOf(readFile(file)).size(), 682u);
    EXPECT_TRUE(holds(program.getErrors(), " 0 reconnects"));
  }

  cTempFolder folder;
  std::string link = folder / "sensor", file = folder / "scans.csv";
  cSimSensor sensor{fastTurning(link)};
  cProgram program{{"scan", link, "-n", "0", "--reconnect", "--format", "csv", "-o", file}};
};

}  // namespace

// Would catch a run that ends with the cable, counts its scans anew or writes its heading again.
TEST_F(ProgramReconnect, goesOnWhenTheDeviceIsBackUnderItsName) {
  sensor.unplug();
  program.waitForError("waiting for " + link);
  sensor.plug();
  const auto scans = sensor.getCounters().scans;
  ASSERT_TRUE(sensor.waitForSentScans(scans + 5, PATIENCE));
  program.signal(SIGINT);
  EXPECT_EQ(program.wait(), 0) << program.getErrors();
  const auto lines = linesOf(readFile(file));
  EXPECT_EQ(lines[0], "scan,timestamp,index,angle_rad,distance_mm");
  for (std::size_t i = 1; i < lines.size(); ++i) ASSERT_EQ(std::stoul(lines[i]), (i + 681) / 682);
  EXPECT_TRUE(holds(program.getErrors(), " 1 reconnect\n"));
  EXPECT_FALSE(sensor.isScanning());
}

// Would catch a wait that no signal ends, or that loses the file then.
TEST_F(ProgramReconnect, isEndedBySignalWhileItWaits) {
  sensor.unplug();
  program.waitForError("waiting for ");
  expectEndBySignal();
}

// There the process ends at once, from the middle of the library.
TEST_F(ProgramReconnect, isEndedBySignalInASearch) {
  sensor.setFault(eSimFault::STALL);
  ASSERT_TRUE(sensor.waitForCommand("VV", PATIENCE, 2)) << "the first search asked once";
  expectEndBySignal();
}
