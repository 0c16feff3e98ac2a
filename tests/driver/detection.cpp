#include <fcntl.h>
#include <gtest/gtest.h>
#include <termios.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <map>

#include "tests/driver/cScriptedSensor.h"
#include "tests/driver/support.h"

namespace {

speed_t speedOf(const std::string& path) {
  const int fd = open(path.c_str(), O_RDWR | O_NOCTTY);
  termios modes = {};
  tcgetattr(fd, &modes);
  close(fd);
  return cfgetospeed(&modes);
}

// --- the line speed ----------------------------------------------------------------------

struct cSpeedCase {
  int speed;
  speed_t constant;
  unsigned detections;
  eSimGarbage garbage;
};

std::ostream& operator<<(std::ostream& out, const cSpeedCase& of) { return out << of.speed; }

class cSpeedSearch : public testing::TestWithParam<cSpeedCase> {};

// Would catch: a wrong order of speeds, garbage taken for an answer or stopping the search.
TEST_P(cSpeedSearch, FindsTheSensorAtItsSpeed) {
  constexpr std::uint64_t HEARD_WHEN_FOUND = sizeof "VV;1\n\n\nTM2;2\nPP;3\n" - 1;
  constexpr std::uint64_t HEARD_WHEN_NOT = sizeof "VV;1\n\n\nTM2;2\nV\n" - 1;
  cSimSetting setting;
  setting.speed = GetParam().speed;
  setting.garbage = GetParam().garbage;
  cSimSensor sensor(setting);
  tDriver driver;

  const cOutput output = outputOf([&] { driver = cSensorDriverManager::create(sensor.getPath()); });

  ASSERT_TRUE(driver);
  EXPECT_TRUE(driver->isActivated());
  EXPECT_EQ(driver->getMaxSpot(), 725);
  EXPECT_EQ(output.err, "driver is activated\n");
  EXPECT_EQ(output.out, "");
  EXPECT_EQ(speedOf(sensor.getPath()), GetParam().constant);
  EXPECT_EQ(sensor.getCounters().bytesHeard,
            HEARD_WHEN_NOT * (GetParam().detections - 1) + HEARD_WHEN_FOUND);
}

INSTANTIATE_TEST_SUITE_P(Speeds, cSpeedSearch,
                         testing::Values(cSpeedCase{115200, B115200, 1, eSimGarbage::LINES},
                                         cSpeedCase{500000, B500000, 3, eSimGarbage::LINES},
                                         cSpeedCase{19200, B19200, 4, eSimGarbage::NO_LINES},
                                         cSpeedCase{57600, B57600, 5, eSimGarbage::LINES}));

// Would catch: stale records of a killed program taken for the answers of a detection.
TEST(cSensorDriverManager, FindsASensorThatSomebodyLeftScanning) {
  cSimSetting setting;
  setting.model = eSimModel::MIDDLE_RANGE;
  setting.scanningAtStart = true;
  cSimSensor sensor(setting);

  const tDriver driver = cSensorDriverManager::create(sensor.getPath());

  ASSERT_TRUE(driver);
  EXPECT_EQ(driver->getVend(), "Simulated sensors");
  EXPECT_EQ(driver->getMaxSpot(), 768);
}

// --- the decisions -----------------------------------------------------------------------

enum class eResult { NONE, SCIP1, SCIP2 };

struct cDecision {
  const char* name;
  std::map<std::string, std::string> answers;  // command without tag: status line and body
  std::vector<std::string> asked;
  eResult result;
  std::string message;
};

std::ostream& operator<<(std::ostream& out, const cDecision& of) { return out << of.name; }

const std::string GOOD = summed("00") + "\n";
const std::string FOUND = "driver is activated\n";

// The sums are right, but what they sum up is too short for a key and a value.
const std::string SHORT_LINE = GOOD + "ABC;" + summed("ABC").back() + "\n";

const cDecision DECISIONS[] = {
    {"Good", {{"TM2", GOOD}, {"PP", GOOD}}, {"VV;1", "TM2;2", "PP;3"}, eResult::SCIP2, FOUND},
    {"Numbered",
     {{"TM2", summed("50") + "\n"}, {"PP", GOOD}},
     {"VV;1", "TM2;2", "PP;3"},
     eResult::SCIP2,
     FOUND},
    {"ShortLines",
     {{"VV", SHORT_LINE}, {"TM2", GOOD}, {"PP", SHORT_LINE}},
     {"VV;1", "TM2;2", "PP;3"},
     eResult::SCIP2,
     FOUND},
    {"LetteredThenReset",
     {{"TM2", summed("0E") + "\n"}, {"RS", GOOD}},
     {"VV;1", "TM2;2", "RS;3"},
     eResult::SCIP2,
     ""},
    {"LetteredNotReset",
     {{"TM2", summed("0E") + "\n"}, {"RS", summed("0E") + "\n"}},
     {"VV;1", "TM2;2", "RS;3"},
     eResult::NONE,
     ""},
    {"BadSum", {{"TM2", "00x\n"}, {"V", "1\n"}}, {"VV;1", "TM2;2", "V"}, eResult::NONE, ""},
    {"Silent", {}, {"VV;1", "TM2;2", "V"}, eResult::NONE, ""},
    {"Scip1",
     {{"TM2", "1\n"}, {"V", "0\n"}, {"SCIP2.0", "1\n"}},
     {"VV;1", "TM2;2", "V", "SCIP2.0"},
     eResult::SCIP1,
     ""},
    {"Scip1Switched",
     {{"TM2", "1\n"}, {"V", "0\n"}, {"SCIP2.0", "0\n"}, {"PP", SHORT_LINE}},
     {"VV;1", "TM2;2", "V", "SCIP2.0", "PP;1"},
     eResult::SCIP2,
     ""},
};

class cDetection : public testing::TestWithParam<cDecision> {};

// Would catch: a branch taken wrongly, an exchange too many, an exception out of a fetch.
TEST_P(cDetection, DecidesByTheAnswers) {
  const cDecision& decision = GetParam();
  std::map<std::string, std::string> answers = decision.answers;
  if (decision.result != eResult::NONE) answers.emplace("VV", GOOD);
  cScriptedSensor sensor([&answers](const std::string& line) {
    const auto answer = answers.find(line.substr(0, line.find(';')));
    return answer == answers.end() ? "" : line + "\n" + answer->second + "\n";
  });
  boost::shared_ptr<cTarvoLink> link = openLink(sensor.getPath());
  tDriver driver;

  const cOutput output = outputOf([&] { driver = cSensorDriverManager::tryCreate(link); });

  EXPECT_EQ(sensor.getCommands(), decision.asked);
  EXPECT_EQ(output.err, decision.message);
  EXPECT_EQ(output.out, "");
  EXPECT_EQ(static_cast<bool>(driver), decision.result != eResult::NONE);
  EXPECT_EQ(static_cast<bool>(boost::dynamic_pointer_cast<cSensorDriverSCIP2>(driver)),
            decision.result == eResult::SCIP2);
  EXPECT_EQ(driver && driver->isActivated(), decision.result == eResult::SCIP2);
}

INSTANTIATE_TEST_SUITE_P(Answers, cDetection, testing::ValuesIn(DECISIONS));

// Would catch: two readers of one line, a sleeping probe that keeps the device's name taken.
TEST(cSensorDriverManager, SwitchesAScip1SensorAndLetsGoOfItAfterwards) {
  cSimSetting setting;
  setting.dialect = eSimDialect::SCIP1_SWITCH;
  cSimSensor sensor(setting);
  const int threads = countThreads();
  tDriver driver;

  const cOutput output = outputOf([&] { driver = cSensorDriverManager::create(sensor.getPath()); });

  ASSERT_TRUE(driver);
  EXPECT_EQ(output.err + output.out, "");
  iSCIP2IF& face = *driver->getSCIP2IF();
  EXPECT_EQ(face.startScan(44, 725, 1, 0, 3, 5600), 0);
  EXPECT_EQ(distancesOf(takeScan(face)), truth(sensor, 0, 44, 725));
  EXPECT_EQ(countOpen(sensor.getPath()), 2) << "the driver's and the sensor's own";
  driver.reset();
  EXPECT_EQ(countOpen(sensor.getPath()), 1);
  EXPECT_TRUE(eventually([&] { return countThreads() == threads + 1; })) << "the sleeping probe's";
}

// Would catch: a minute spent on a port that can have no sensor, a file written to.
TEST(cSensorDriverManager, SpendsNoTimeOnWhatIsNoTerminal) {
  const std::filesystem::path file =
      std::filesystem::temp_directory_path() / ("no_terminal." + std::to_string(getpid()));
  std::ofstream(file) << "kept";
  const auto begin = std::chrono::steady_clock::now();

  for (const std::string& path : {std::string("/dev/null"), file.string(), file.string() + ".no"}) {
    tDriver driver;
    const cOutput output = outputOf([&] { driver = cSensorDriverManager::create(path); });
    EXPECT_FALSE(driver);
    EXPECT_EQ(
        output.out,
        "Failed all 19200/57600/115200/500000bps. (even tried 3times for each)\n[" + path + "]\n");
    EXPECT_NE(output.err.find("\ncSensorDriver::Could not activate driver\n"), std::string::npos);
  }

  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(4));
  std::string content;
  std::ifstream(file) >> content;
  EXPECT_EQ(content, "kept");
  std::filesystem::remove(file);
}

}  // namespace
