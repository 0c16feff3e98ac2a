#include <csignal>

#include "sim/tarvosim.h"
#include "tests/support/cCaseName.h"
#include "tests/tools/cProgram.h"
#include "tests/tools/cTempFolder.h"
#include "tests/tools/simSettings.h"

namespace {

constexpr std::chrono::seconds PATIENCE{60};

/// A scan that is to outlive its sensor's cable, by a link that follows the device.
class cLastingScan {
 public:
  explicit cLastingScan(const std::vector<std::string>& more = {})
      : sensor(makeSetting(link)), program(makeArguments(link, more)) {}

  cTempFolder folder;
  std::string link = folder / "sensor";
  cSimSensor sensor;
  cProgram program;

 private:
  static cSimSetting makeSetting(const std::string& link) {
    cSimSetting setting = fastTurning();
    setting.link = link;
    return setting;
  }

  static std::vector<std::string> makeArguments(const std::string& link,
                                                std::vector<std::string> more) {
    more.insert(more.begin(), {"scan", link, "-n", "0", "--reconnect"});
    return more;
  }
};

}  // namespace

TEST(ProgramReconnect, goesOnWhenTheDeviceIsBackUnderItsName) {
  cLastingScan run;
  for (int line = 0; line < 4; ++line) run.program.readLine();
  run.sensor.unplug();
  run.program.waitForError("waiting for " + run.link);
  run.sensor.plug();
  const auto scans = run.sensor.getCounters().scans;
  ASSERT_TRUE(run.sensor.waitForSentScans(scans + 5, PATIENCE));
  run.program.signal(SIGINT);
  EXPECT_EQ(run.program.wait(), 0) << run.program.getErrors();
  const auto lines = linesOf(run.program.getOutput());
  for (std::size_t i = 1; i < lines.size(); ++i) {
    EXPECT_EQ(std::stoul(lines[i]), i) << "scans are not counted on, or the heading comes again";
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
  const cTempFolder place;
  const std::string file = place / "scans.csv";
  cLastingScan run({"--format", "csv", "-o", file});
  ASSERT_TRUE(run.sensor.waitForSentScans(5, PATIENCE));
  GetParam().lose(run.sensor);
  run.program.waitForError("waiting for ");
  ASSERT_TRUE(run.sensor.waitForCommand("VV", PATIENCE, GetParam().searches));
  run.program.signal(SIGTERM);
  EXPECT_EQ(run.program.wait(), 0) << run.program.getErrors();
  EXPECT_GT(linesOf(readFile(file)).size(), 682u);
  EXPECT_TRUE(holds(run.program.getErrors(), " 0 reconnects"));
}

INSTANTIATE_TEST_SUITE_P(
    All, ProgramWaiting,
    testing::Values(cLoss{"forTheDevice", [](cSimSensor& sensor) { sensor.unplug(); }, 1},
                    cLoss{"inASearch",
                          [](cSimSensor& sensor) { sensor.setFault(eSimFault::STALL); }, 2}),
    cCaseName());
