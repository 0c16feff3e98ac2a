// How a sensor is found, and what a path may be instead of a sensor's.
#include "tests/support/cCaseName.h"
#include "tests/support/cScriptedSensor.h"

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
  bool isScanning = false;  // for another program, when it is searched for
};

class Detected : public testing::TestWithParam<cKind> {};

// Catches: a wrong order of speeds, garbage or another program's scans taken for an answer or
// stopping the search; a sensor found as another kind; bytes lost to the probe's thread; a found
// sensor that gives no scans.
TEST_P(Detected, IsOfItsKindAndScans) {
  const cKind& kind = GetParam();
  cSimSetting setting = turning(200, kind.dialect);
  setting.unknownCommands = kind.unknown;
  if (kind.dialect != SCIP2) setting.blankCommands = kind.unknown;
  setting.speed = kind.speed;
  setting.garbage = kind.garbage;
  setting.scanningAtStart = kind.isScanning;
  cSimSensor sensor(setting);
  const tLink link = openLink(sensor.getPath(), LONG);
  const std::string older = "000725010;3\n99b\n0123";  // the rest of another program's answer
  sensor.inject(older);
  ASSERT_TRUE(sensor.waitFor(&cSimCounters::bytesWritten, older.size(), LONG_TIME));
  tDriver driver;
  const cOutput output = outputOf([&] { driver = cSensorDriverManager::create(link); });
  ASSERT_TRUE(driver);
  EXPECT_EQ(link->portbuf->readTimeout, 300);
  const bool isScip1 = dynamic_cast<cSensorDriverSCIP1*>(driver.get()) != nullptr;
  EXPECT_EQ(isScip1, kind.dialect == SCIP1);
  EXPECT_EQ(driver->isActivated(), !isScip1);
  EXPECT_EQ(output.out + output.err, kind.dialect == SCIP2 ? "driver is activated\n" : "");
  if (kind.dialect == SCIP2) {
    constexpr std::size_t IN_VAIN = sizeof "VV;1\n\n\nTM2;2\nV\n" - 1;
    EXPECT_EQ(sensor.getCounters().bytesReceived,
              sizeof "VV;1\n\n\nTM2;2\nPP;3\n" - 1 + IN_VAIN * (kind.detections - 1));
    EXPECT_TRUE(kind.detections > 1 || driver->getVend() == "Simulated sensors") << "asked once";
  }
  iSCIP2IF& face = *driver->getSCIP2IF();
  EXPECT_TRUE(stopLeftScan(face));
  for (int i = 0; i < 10; ++i) ASSERT_EQ(driver->getSCIP1IF()->doVersion(), 0) << i;
  EXPECT_EQ(driver->getVend(), isScip1 ? "Simulated sensors;" : "Simulated sensors");
  const std::size_t sent = startRetrying(sensor, face, 44, 143, 1, 2, 4095);
  for (std::size_t i = 0; i < 2; ++i) {
    EXPECT_EQ(distancesOf(takeScan(face)), truth(sensor, sent + i, 44, 143, 1, 4095));
  }
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, Detected,
    testing::Values(cKind{"Scip2", SCIP2, STATUS, 115200, 1},
                    cKind{"Scip2LeftScanning", SCIP2, STATUS, 0, 1, eSimGarbage::BY_SEED, true},
                    cKind{"Scip2At500000", SCIP2, STATUS, 500000, 3, eSimGarbage::LINES},
                    cKind{"Scip2At57600", SCIP2, STATUS, 57600, 5, eSimGarbage::NO_LINES},
                    cKind{"Scip1Status", SCIP1, STATUS, 115200, 1},
                    cKind{"Scip1Echo", SCIP1, ECHO_ONLY, 115200, 1},
                    cKind{"Scip1At19200", SCIP1, SILENT, 19200, 4},
                    cKind{"SwitchStatus", SWITCH, STATUS, 115200, 1},
                    cKind{"SwitchEcho", SWITCH, ECHO_ONLY, 115200, 1},
                    cKind{"SwitchAt57600", SWITCH, SILENT, 57600, 5}),
    cCaseName());

// Catches: a branch taken wrongly, an exchange too many, an exception out of a fetch.
TEST(Detection, DecidesByTheAnswers) {
  struct cRow {
    std::string answers;  // each "|", command without tag, ">", status line and body
    std::string asked;    // the lines that are not blank, behind those of each probe
    std::size_t blankLines;
    const char* message;
    bool isFound = true;
  };
  // The sum of "ABC" is right, but that is too short for a key and a value.
  for (const cRow& row :
       {cRow{"|VV>00P|TM2>50U|PP>00P", "PP;3\n", 2, "driver is activated\n"},
        cRow{"|VV>00P\nABC;6|TM2>00P|PP>00P\nABC;6", "PP;3\n", 2, "driver is activated\n"},
        cRow{"|TM2>1|V>0|SCIP2.0>0|PP>00P\nABC;6", "V\nSCIP2.0\nPP;1\n", 2, ""},
        cRow{"|TM2>0Ee|RS>00P", "RS;3\n", 3, ""}, cRow{"|TM2>0Ee|RS>0Ee", "RS;3\n", 3, "", false},
        cRow{"|TM2>00x|V>1", "V\n", 2, "", false}}) {
    const cScriptedSensor sensor([&](const std::string& line) -> std::string {
      const std::string key = "|" + line.substr(0, line.find(';')) + ">";
      if (row.answers.find(key) == std::string::npos) return "";
      const std::size_t begin = row.answers.find(key) + key.size();
      return line + "\n" + row.answers.substr(begin, row.answers.find('|', begin) - begin) + "\n\n";
    });
    tLink link = openLink(sensor.getPath());
    tDriver driver;
    const cOutput output = outputOf([&] { driver = cSensorDriverManager::tryCreate(link); });
    EXPECT_EQ(output.out + output.err, row.message) << row.answers;
    EXPECT_EQ(driver && driver->isActivated(), row.isFound) << row.answers;
    std::string asked;
    for (const std::string& line : sensor.getCommands()) asked += line + "\n";
    EXPECT_EQ(asked, "VV;1\nTM2;2\n" + row.asked);
    EXPECT_EQ(sensor.getCounters().bytesReceived, asked.size() + row.blankLines);
  }
}

std::string failureAt(const std::string& path) {
  return "Failed all 19200/57600/115200/500000bps. (even tried 3times for each)\n[" + path + "]\n";
}

// Catches: a search through all speeds, a minute long, where there is no terminal.
TEST(Detection, RefusesAtOnceWhatIsNoTerminal) {
  for (const std::string path : {"/nowhere/tty", "/tmp", "/dev/null"}) {
    cOutput output;
    const auto search = [&] { EXPECT_FALSE(cSensorDriverManager::create(path)); };
    EXPECT_LT(measure([&] { output = outputOf(search); }), LONG) << path;
    EXPECT_EQ(output.out, failureAt(path));
  }
}

// Catches: detections too many or too few, a probe left over, messages that moved. Each detection
// is refused at once: a sensor that is mute takes five seconds for each.
TEST(Detection, FailsWhereNoSensorAnswers) {
  const cScriptedSensor sensor(
      [](const std::string& line) { return line + (line == "V" ? "\n1\n\n" : "\n00x\n\n"); });
  const int threads = countThreads();
  const std::string path = sensor.getPath();
  const cOutput output = outputOf([&] { EXPECT_FALSE(cSensorDriverManager::create(path)); });
  EXPECT_EQ(output.out, failureAt(path));
  EXPECT_EQ(output.err, "cSensorDriver::Could not activate driver\n");
  tLines asked;
  for (int i = 0; i < 13; ++i) asked.insert(asked.end(), {"VV;1", "TM2;2", "V"});
  EXPECT_EQ(sensor.getCommands(), asked);
  EXPECT_EQ(countOpen(path), 1) << "but the sensor's own";
  EXPECT_TRUE(eventually([&] { return countThreads() == threads; }));
}

}  // namespace
