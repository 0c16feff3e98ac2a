// What a path may be instead of a sensor's, and how the port's former user may have left it.

#include <fcntl.h>
#include <sys/stat.h>

#include "tests/faults/cFaultRig.h"
#include "tests/support/cCaseName.h"
#include "tests/tools/cTempFolder.h"

namespace {

// --- no sensor ---------------------------------------------------------------------------

struct cPath {
  const char* name;
  const char* path;  // in a folder; or absolute
  const char* message;
  int mode = 0;  // of the file there; 0: none
};

const cPath PATHS[] = {
    // Would catch: a search through all speeds, a minute long, on what is no terminal.
    {"Missing", "none", "No such file"},
    {"Forbidden", "file", "Permission denied", S_IXOTH},
    {"Folder", "", "Is a directory"},
    {"Null", "/dev/null", "ioctl"},
    {"DanglingLink", "link", "No such file"},
    // Would catch: commands written into somebody's file.
    {"File", "file", "ioctl", S_IRWXU},
};

class cNoSensor : public testing::TestWithParam<cPath> {};

TEST_P(cNoSensor, IsToldAtOnce) {
  const cPath& row = GetParam();
  const cTempFolder folder;
  const std::string path = row.path[0] == '/' ? row.path : folder / row.path;
  std::filesystem::create_symlink(folder / "none", folder / "link");
  if (row.mode != 0) std::ofstream(path) << "kept";
  if (row.mode != 0) chmod(path.c_str(), static_cast<mode_t>(row.mode));
  const cSimSensor sensor{cSimSetting()};
  cFaultOracle oracle(sensor);
  const uid_t self = geteuid();
  // Root may open all, so somebody else asks.
  if (self == 0 && row.mode == S_IXOTH) {
    ASSERT_EQ(seteuid(65534), 0);
  }
  const cOutput output = outputOf([&] {
    oracle.during("create", 0, [&] { EXPECT_FALSE(cSensorDriverManager::create(path)); });
  });
  ASSERT_EQ(seteuid(self), 0);
  EXPECT_NE(output.err.find(row.message), std::string::npos) << output.err;
  EXPECT_NE(output.out.find("[" + path + "]"), std::string::npos) << output.out;
  if (row.mode != 0) {
    chmod(path.c_str(), S_IRWXU);
    EXPECT_EQ(readFile(path), "kept");
  }
}

INSTANTIATE_TEST_SUITE_P(Paths, cNoSensor, testing::ValuesIn(PATHS), cCaseName());

// --- a port that was used before ---------------------------------------------------------

struct cLeft {
  const char* name;
  void (*leave)(cSimSensor& sensor, termios& modes);
  bool isScanning = false;
};

/// As a terminal is for its users: lines, echo, signals, CR for LF.
void cook(cSimSensor&, termios& modes) {
  modes.c_iflag |= ICRNL | IXON | BRKINT;
  modes.c_oflag |= OPOST | ONLCR;
  modes.c_lflag |= ICANON | ECHO | ECHOE | ECHOK | ISIG | IEXTEN;
}

void leaveFlowControl(cSimSensor&, termios& modes) { modes.c_iflag |= IXON | IXOFF; }

void leaveSevenBits(cSimSensor&, termios& modes) {
  modes.c_cflag = (modes.c_cflag & ~static_cast<tcflag_t>(CSIZE)) | CS7 | PARENB;
  modes.c_iflag |= INPCK | ISTRIP;
}

/// Half a record, and what stops a line that has flow control.
void leaveBytes(cSimSensor& sensor, termios&) {
  sensor.say("000725010;3\n99b\n0123\x13");
  EXPECT_TRUE(sensor.waitFor(&cSimCounters::records, 1, LONG_TIME));
}

const cLeft LEFT[] = {
    // Would catch: commands that come back as answers, lines that wait for an end they never get.
    {"Cooked", cook},
    {"FlowControl", leaveFlowControl},
    {"SevenBits", leaveSevenBits},
    // Would catch: old bytes in front of the first answer.
    {"StaleBytes", leaveBytes},
};
// Would catch: another program's scans taken for answers, or for one's own.
const cLeft STREAM = {"StaleStream", [](cSimSensor&, termios&) {}, true};

class cUsedPort : public testing::TestWithParam<std::tuple<cLeft, eSimDialect>> {};

TEST_P(cUsedPort, IsTakenOver) {
  const auto& [row, dialect] = GetParam();
  cSimSetting setting = paced(dialect);
  setting.scanningAtStart = row.isScanning;
  cSimSensor sensor(setting);
  const int port = open(sensor.getPath().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
  termios modes = {};
  ASSERT_EQ(tcgetattr(port, &modes), 0);
  row.leave(sensor, modes);
  ASSERT_EQ(tcsetattr(port, TCSANOW, &modes), 0);
  close(port);

  cFaultOracle oracle(sensor);
  tDriver driver;
  // Before SCIP 1.x is asked for, "VV" and "TM2" must have failed.
  const int most = dialect == eSimDialect::SCIP1 ? 3 * READ + 2 * ANSWER : ANSWER;
  oracle.during("create", most, [&] { driver = cSensorDriverManager::create(sensor.getPath()); });
  ASSERT_TRUE(driver);
  iSCIP2IF& face = *driver->getSCIP2IF();
  if (row.isScanning) {
    EXPECT_TRUE(stopLeftScan(face));
  }
  startScan(face);
  for (int scan = 0; scan < 3; ++scan) oracle.expectTrueScan(face);
  EXPECT_EQ(oracle.told + oracle.lies, 0);
  face.stopAll();
}

INSTANTIATE_TEST_SUITE_P(Modes, cUsedPort, testing::Combine(testing::ValuesIn(LEFT), DIALECTS),
                         cRowName());
INSTANTIATE_TEST_SUITE_P(Stream, cUsedPort,
                         testing::Combine(testing::Values(STREAM),
                                          testing::Values(eSimDialect::SCIP2)),
                         cRowName());

}  // namespace
