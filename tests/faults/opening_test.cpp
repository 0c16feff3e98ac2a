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
  mode_t mode = 0;  // of the file there; 0: none
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
  if (row.mode != 0) chmod(path.c_str(), row.mode);
  const cSimSensor sensor{cSimSetting()};
  cFaultOracle oracle(sensor);
  const uid_t self = geteuid();
  // Root may open all, so somebody else asks.
  ASSERT_TRUE(self != 0 || row.mode != S_IXOTH || seteuid(65534) == 0);
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
  tcflag_t input = 0, output = 0, local = 0;  // modes switched on
  tcflag_t control = 0;                       // modes changed
  std::string bytes = "";
  bool isScanning = false;
};

const cLeft LEFT[] = {
    // Would catch: commands that come back as answers, lines that wait for an end they never get.
    {"Cooked", ICRNL | IXON | BRKINT, OPOST | ONLCR, ICANON | ECHO | ECHOE | ECHOK | ISIG | IEXTEN},
    {"FlowControl", IXON | IXOFF},
    {"SevenBits", INPCK | ISTRIP, 0, 0, (CS8 ^ CS7) | PARENB},
    // Would catch: old bytes in front of the first answer: half a record, and what stops a line
    // that has flow control.
    {"StaleBytes", 0, 0, 0, 0, "000725010;3\n99b\n0123\x13"},
    // Would catch: another program's scans taken for answers, or for one's own. SCIP 1.x has none.
    {"StaleStream", 0, 0, 0, 0, "", true},
};

class cUsedPort : public testing::TestWithParam<std::tuple<cLeft, eSimDialect>> {};

TEST_P(cUsedPort, IsTakenOver) {
  const auto& [row, dialect] = GetParam();
  cSimSetting setting = paced(dialect);
  setting.scanningAtStart = row.isScanning;
  cSimSensor sensor(setting);
  const int port = open(sensor.getPath().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
  termios modes = {};
  ASSERT_EQ(tcgetattr(port, &modes), 0);
  modes.c_iflag |= row.input;
  modes.c_oflag |= row.output;
  modes.c_lflag |= row.local;
  modes.c_cflag ^= row.control;
  ASSERT_EQ(tcsetattr(port, TCSANOW, &modes), 0);
  sensor.say(row.bytes);
  ASSERT_TRUE(sensor.waitFor(&cSimCounters::bytesWritten, row.bytes.size(), LONG_TIME));
  close(port);

  cFaultOracle oracle(sensor);
  tDriver driver;
  // Before SCIP 1.x is asked for, "VV" and "TM2" must have failed.
  const int most = dialect == eSimDialect::SCIP1 ? 3 * READ + 2 * ANSWER : ANSWER;
  oracle.during("create", most, [&] { driver = cSensorDriverManager::create(sensor.getPath()); });
  ASSERT_TRUE(driver);
  iSCIP2IF& face = *driver->getSCIP2IF();
  EXPECT_TRUE(stopLeftScan(face));
  startScan(face);
  for (int scan = 0; scan < 3; ++scan) oracle.expectTrueScan(face);
  EXPECT_EQ(oracle.told + oracle.lies, 0);
  face.stopAll();
}

INSTANTIATE_TEST_SUITE_P(Modes, cUsedPort, testing::Combine(testing::ValuesIn(LEFT), DIALECTS),
                         cRowName());

}  // namespace
