#include <csignal>

#include "sim/tarvosim.h"
#include "tests/support/cCaseName.h"
#include "tests/tools/cProgram.h"
#include "tests/tools/cTempFolder.h"
#include "tests/tools/simSettings.h"

namespace {

constexpr std::chrono::seconds PATIENCE{60};

/// A scan that is to outlive its sensor's cable, by a link that follows the device.
struct cLastingScan {
  static cSimSetting withLink(const std::string& link) {
    cSimSetting setting = fastTurning();
    setting.link = link;
    return setting;
  }

  cTempFolder folder;
  std::string link = folder / "sensor";
  std::string file = folder / "scans.csv";
  cSimSensor sensor{withLink(link)};
  cProgram program{{"scan", link, "-n", "0", "--reconnect", "--format", "csv", "-o", file}};
};

}  // namespace

TEST(ProgramReconnect, goesOnWhenTheDeviceIsBackUnderItsName) {
  cLastingScan run;
  ASSERT_TRUE(run.sensor.waitForSentScans(5, PATIENCE));
  run.sensor.unplug();
  run.program.waitForError("waiting for " + run.link);
  run.sensor.plug();
  const auto scans = run.sensor.getCounters().scans;
  ASSERT_TRUE(run.sensor.waitForSentScans(scans + 5, PATIENCE));
  run.program.signal(SIGINT);
  EXPECT_EQ(run.program.wait(), 0) << run.program.getErrors();
  const auto lines = linesOf(readFile(run.file));
  for (std::size_t i = 1; i < lines.size(); ++i) {
    ASSERT_EQ(std::stoul(lines[i]), (i + 681) / 682)
        << "not counted on, or the heading comes again";
  }
  EXPECT_TRUE(holds(run.program.getErrors(), " 1 reconnects"));
  EXPECT_FALSE(run.sensor.isScanning());
}

struct cLoss {
  const char* name;
  void (*lose)(cSimSensor& sensor);
  std::size_t searches;  // that began until then, the first one too: each asks "VV" once
};

class ProgramWaiting : public testing::TestWithParam<cLoss> {};

// In a search the process ends at once, from the middle of the library.
TEST_P(ProgramWaiting, isEndedByASignalThatFinishesTheFile) {
  cLastingScan run;
  ASSERT_TRUE(run.sensor.waitForSentScans(5, PATIENCE));
  GetParam().lose(run.sensor);
  run.program.waitForError("waiting for ");
  ASSERT_TRUE(run.sensor.waitForCommand("VV", PATIENCE, GetParam().searches));
  run.program.signal(SIGTERM);
  EXPECT_EQ(run.program.wait(), 0) << run.program.getErrors();
  EXPECT_GT(linesOf(readFile(run.file)).size(), 682u);
  EXPECT_TRUE(holds(run.program.getErrors(), " 0 reconnects"));
}

INSTANTIATE_TEST_SUITE_P(
    All, ProgramWaiting,
    testing::Values(cLoss{"forTheDevice", [](cSimSensor& sensor) { sensor.unplug(); }, 1},
                    cLoss{"inASearch",
                          [](cSimSensor& sensor) { sensor.setFault(eSimFault::STALL); }, 2}),
    cCaseName());
