#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <map>

#include "tests/driver/cScriptedDriver.h"
#include "tests/support/cCaseName.h"

namespace {

constexpr auto SCIP1 = eSimDialect::SCIP1;
constexpr auto SWITCH = eSimDialect::SCIP1_SWITCH;
constexpr auto SCIP2 = eSimDialect::SCIP2;
constexpr auto STATUS = eSimUnknown::STATUS;
constexpr auto ECHO_ONLY = eSimUnknown::ECHO_ONLY;
constexpr auto SILENT = eSimUnknown::SILENT;

struct cKind {
  const char* name;
  eSimDialect dialect;
  eSimUnknown unknown;  // what these commands get; in SCIP 1.x blank ones too
  int speed;            // the sensor's
  unsigned detections;  // at 115200 first, then at the speeds in their order
  eSimGarbage garbage = eSimGarbage::BY_SEED;
};

void PrintTo(const cKind& kind, std::ostream* out) { *out << kind.name; }

class cDetected : public testing::TestWithParam<cKind> {};

}  // namespace

// Would catch: a wrong order of speeds, garbage taken for an answer or stopping the search; a
// sensor found as another kind; bytes lost to the probe's thread; a found one that gives no scans.
TEST_P(cDetected, IsFoundAsItsKindAndScans) {
  const cKind& kind = GetParam();
  cSimSetting setting = quick();
  setting.dialect = kind.dialect;
  setting.unknownCommands = kind.unknown;
  if (kind.dialect != SCIP2) setting.blankCommands = kind.unknown;
  setting.speed = kind.speed;
  setting.garbage = kind.garbage;
  const cSimSensor sensor(setting);
  tDriver driver;

  const cOutput output = outputOf([&] { driver = cSensorDriverManager::create(sensor.getPath()); });

  ASSERT_TRUE(driver);
  const bool isScip1 = dynamic_cast<cSensorDriverSCIP1*>(driver.get()) != nullptr;
  EXPECT_EQ(isScip1, kind.dialect == SCIP1);
  EXPECT_EQ(driver->isActivated(), !isScip1);
  EXPECT_EQ(output.err, kind.dialect == SCIP2 ? "driver is activated\n" : "");
  EXPECT_EQ(output.out, "");
  if (kind.dialect == SCIP2) {
    constexpr std::size_t IN_VAIN = sizeof "VV;1\n\n\nTM2;2\nV\n" - 1;
    EXPECT_EQ(sensor.getCounters().bytesHeard,
              sizeof "VV;1\n\n\nTM2;2\nPP;3\n" - 1 + IN_VAIN * (kind.detections - 1));
  }
  for (int i = 0; i < 10; ++i) ASSERT_EQ(driver->getSCIP1IF()->doVersion(), 0) << i;
  EXPECT_EQ(driver->getVend(), isScip1 ? "Simulated sensors;" : "Simulated sensors");
  iSCIP2IF& face = *driver->getSCIP2IF();
  const std::size_t sent = startSurely(sensor, face, 44, 143, 1, 2, 4095);
  for (std::size_t i = 0; i < 2; ++i) {
    EXPECT_EQ(distancesOf(takeScan(face)), truth(sensor, sent + i, 44, 143, 1, 4095));
  }
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, cDetected,
    testing::Values(cKind{"Scip2", SCIP2, STATUS, 115200, 1},
                    cKind{"Scip2At500000", SCIP2, STATUS, 500000, 3, eSimGarbage::LINES},
                    cKind{"Scip2At19200", SCIP2, STATUS, 19200, 4, eSimGarbage::NO_LINES},
                    cKind{"Scip2At57600", SCIP2, STATUS, 57600, 5, eSimGarbage::LINES},
                    cKind{"Scip1Status", SCIP1, STATUS, 115200, 1},
                    cKind{"Scip1Echo", SCIP1, ECHO_ONLY, 115200, 1},
                    cKind{"Scip1Silent", SCIP1, SILENT, 115200, 1},
                    cKind{"Scip1At19200", SCIP1, ECHO_ONLY, 19200, 4},
                    cKind{"SwitchStatus", SWITCH, STATUS, 115200, 1},
                    cKind{"SwitchEcho", SWITCH, ECHO_ONLY, 115200, 1},
                    cKind{"SwitchSilent", SWITCH, SILENT, 115200, 1},
                    cKind{"SwitchAt57600", SWITCH, SILENT, 57600, 5}),
    cCaseName());

namespace {

using tAnswers = std::map<std::string, std::string>;  // command without tag: status line and body
using tLines = std::vector<std::string>;

struct cDecision {
  const char* name;
  tAnswers answers;
  tLines asked;
  bool isFound;
  std::string message;
};

void PrintTo(const cDecision& decision, std::ostream* out) { *out << decision.name; }

const std::string GOOD = summed("00") + "\n";
const std::string LETTER = summed("0E") + "\n";
const std::string FOUND = "driver is activated\n";
const tLines THREE = {"VV;1", "", "", "TM2;2", "PP;3"};
const tLines RESET = {"VV;1", "", "", "TM2;2", "", "RS;3"};
const tLines OLD = {"VV;1", "", "", "TM2;2", "V"};
const tLines SWITCHED = {"VV;1", "", "", "TM2;2", "V", "SCIP2.0", "PP;1"};

// The sum is right, but what it sums up is too short for a key and a value.
const std::string SHORT_LINE = GOOD + "ABC;" + summed("ABC").back() + "\n";

class cDetection : public testing::TestWithParam<cDecision> {};

}  // namespace

// Would catch: a branch taken wrongly, an exchange too many, an exception out of a fetch.
TEST_P(cDetection, DecidesByTheAnswers) {
  const cDecision& decision = GetParam();
  const cPtyPair cable;
  cScriptedPeer peer(cable, [&](const std::string& line) {
    const auto answer = decision.answers.find(line.substr(0, line.find(';')));
    return answer == decision.answers.end() ? "" : line + "\n" + answer->second + "\n";
  });
  tLink link = openLink(cable.getPath());
  tDriver driver;

  const cOutput output = outputOf([&] { driver = cSensorDriverManager::tryCreate(link); });

  EXPECT_EQ(peer.waitLines(decision.asked.size()), decision.asked);
  EXPECT_EQ(output.err, decision.message);
  EXPECT_EQ(output.out, "");
  EXPECT_EQ(static_cast<bool>(driver), decision.isFound);
  EXPECT_EQ(driver && driver->isActivated(), decision.isFound);
}

INSTANTIATE_TEST_SUITE_P(
    Answers, cDetection,
    testing::Values(cDecision{"Numbered",
                              {{"VV", GOOD}, {"TM2", summed("50") + "\n"}, {"PP", GOOD}},
                              THREE,
                              true,
                              FOUND},
                    cDecision{"ShortLines",
                              {{"VV", SHORT_LINE}, {"TM2", GOOD}, {"PP", SHORT_LINE}},
                              THREE,
                              true,
                              FOUND},
                    cDecision{
                        "SwitchedShortLines",
                        {{"TM2", "1\n"}, {"V", "0\n"}, {"SCIP2.0", "0\n"}, {"PP", SHORT_LINE}},
                        SWITCHED,
                        true,
                        ""},
                    cDecision{"Reset", {{"TM2", LETTER}, {"RS", GOOD}}, RESET, true, ""},
                    cDecision{"NotReset", {{"TM2", LETTER}, {"RS", LETTER}}, RESET, false, ""},
                    cDecision{"BadSum", {{"TM2", "00x\n"}, {"V", "1\n"}}, OLD, false, ""}),
    cCaseName());

// Would catch: a sleeping probe that keeps the device's name taken, a thread left behind.
TEST(Detection, LetsGoOfASwitchedSensor) {
  cSimSetting setting;
  setting.dialect = SWITCH;
  const cSimSensor sensor(setting);
  const int threads = countThreads();
  tDriver driver = cSensorDriverManager::create(sensor.getPath());
  EXPECT_EQ(sensor.getCommands(), (tLines{"VV;1", "TM2;2", "V", "SCIP2.0", "PP;1"}));
  EXPECT_EQ(countOpen(sensor.getPath()), 2) << "the driver's and the sensor's own";
  driver.reset();
  EXPECT_EQ(countOpen(sensor.getPath()), 1);
  EXPECT_TRUE(eventually([&] { return countThreads() == threads + 1; })) << "the sleeping probe's";
}

// Would catch: a minute spent on a port that can have no sensor, a file written to.
TEST(Detection, SpendsNoTimeOnWhatIsNoTerminal) {
  const std::filesystem::path file =
      std::filesystem::temp_directory_path() / ("no_terminal." + std::to_string(getpid()));
  std::ofstream(file) << "kept";
  const auto begin = std::chrono::steady_clock::now();
  for (const std::string& path : {std::string("/dev/null"), file.string(), file.string() + ".no"}) {
    tDriver driver;
    const cOutput output = outputOf([&] { driver = cSensorDriverManager::create(path); });
    EXPECT_FALSE(driver);
    EXPECT_NE(output.out.find("[" + path + "]\n"), std::string::npos);
    EXPECT_NE(output.err.find("\ncSensorDriver::Could not activate driver\n"), std::string::npos);
  }
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(4));
  EXPECT_EQ(std::filesystem::file_size(file), 4u);
  std::filesystem::remove(file);
}
