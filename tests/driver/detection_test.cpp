// How a sensor is found. What a path may be instead of a sensor's, the opening faults have.
#include <gtest/gtest.h>

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

using tLines = std::vector<std::string>;

struct cDecision {
  const char* name;
  std::string answers;  // each "|", command without tag, ">", status line and body
  tLines asked;
  bool isFound;
  const char* message;
};

const tLines THREE = {"VV;1", "", "", "TM2;2", "PP;3"};
const tLines RESET = {"VV;1", "", "", "TM2;2", "", "RS;3"};
const tLines OLD = {"VV;1", "", "", "TM2;2", "V"};
const tLines SWITCHED = {"VV;1", "", "", "TM2;2", "V", "SCIP2.0", "PP;1"};
constexpr auto FOUND = "driver is activated\n";

// The sum of "ABC" is right, but that is too short for a key and a value.
const cDecision DECISIONS[] = {
    {"Numbered", "|VV>00P|TM2>50U|PP>00P", THREE, true, FOUND},
    {"ShortLines", "|VV>00P\nABC;6|TM2>00P|PP>00P\nABC;6", THREE, true, FOUND},
    {"SwitchedShortLines", "|TM2>1|V>0|SCIP2.0>0|PP>00P\nABC;6", SWITCHED, true, ""},
    {"Reset", "|TM2>0Ee|RS>00P", RESET, true, ""},
    {"NotReset", "|TM2>0Ee|RS>0Ee", RESET, false, ""},
    {"BadSum", "|TM2>00x|V>1", OLD, false, ""}};

class cDetection : public testing::TestWithParam<cDecision> {};

}  // namespace

// Would catch: a branch taken wrongly, an exchange too many, an exception out of a fetch.
TEST_P(cDetection, DecidesByTheAnswers) {
  const cDecision& decision = GetParam();
  const std::string& answers = decision.answers;
  const cPtyPair cable;
  cScriptedPeer peer(cable, [&](const std::string& line) -> std::string {
    const std::string key = "|" + line.substr(0, line.find(';')) + ">";
    if (answers.find(key) == std::string::npos) return "";
    const std::size_t begin = answers.find(key) + key.size();
    return line + "\n" + answers.substr(begin, answers.find('|', begin) - begin) + "\n\n";
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

INSTANTIATE_TEST_SUITE_P(Answers, cDetection, testing::ValuesIn(DECISIONS), cCaseName());

// Would catch: a sleeping probe that keeps the device's name taken, a thread left behind.
TEST(Detection, LetsGoOfASwitchedSensor) {
  cSimSetting setting;
  setting.dialect = SWITCH;
  const cSimSensor sensor(setting);
  const int threads = countThreads();
  tDriver driver = cSensorDriverManager::create(sensor.getPath());
  EXPECT_EQ(countOpen(sensor.getPath()), 2) << "the driver's and the sensor's own";
  driver.reset();
  EXPECT_EQ(countOpen(sensor.getPath()), 1);
  EXPECT_TRUE(eventually([&] { return countThreads() == threads + 1; })) << "the sleeping probe's";
}
