// What a path may be instead of a sensor's, and how the port's former user may have left it.

#include <fcntl.h>
#include <sys/stat.h>

#include "tests/faults/cChild.h"
#include "tests/support/cCaseName.h"
#include "tests/support/syscalls.h"
#include "tests/tools/cTempFolder.h"

namespace {

// --- no sensor ---------------------------------------------------------------------------

struct cPath {
  const char* name;
  std::string path;
  const char* message;
};

// Each would catch a search through all speeds, a minute long, and what is said beside it.
TEST(cNoSensor, IsToldAtOnce) {
  const cTempFolder folder;
  for (const char* name : {"file", "forbidden"}) std::ofstream(folder / name) << "kept";
  std::filesystem::create_symlink(folder / "none", folder / "link");
  for (const std::string& path : {folder / "", folder / "file"}) chmod(path.c_str(), 0777);
  chmod((folder / "forbidden").c_str(), 0);
  const cPath paths[] = {
      {"missing", folder / "none", "No such file"},              // a file made of that name
      {"forbidden", folder / "forbidden", "Permission denied"},  // another reason told
      {"a folder", folder / "", "Is a directory"},               // one opened for reading only
      {"/dev/null", "/dev/null", "ioctl"},  // an end of file that is asked again and again
      {"a dangling link", folder / "link", "No such file"},  // a file made where it leads
      {"a file", folder / "file", "ioctl"}};                 // commands written into it
  cFaultRig rig{cSimSetting()};
  const uid_t self = geteuid();
  ASSERT_TRUE(self != 0 || seteuid(65534) == 0);  // root may open all, so somebody else asks
  for (const cPath& row : paths) {
    const cOutput output = outputOf([&] {
      rig.during(row.name, 0, [&] { EXPECT_FALSE(cSensorDriverManager::create(row.path)); });
    });
    EXPECT_NE(output.err.find(row.message), std::string::npos) << row.name << output.err;
    EXPECT_NE(output.out.find("[" + row.path + "]"), std::string::npos) << row.name << output.out;
  }
  ASSERT_EQ(seteuid(self), 0);
  EXPECT_EQ(readFile(folder / "file"), "kept");
}

// --- a port that was used before ---------------------------------------------------------

struct cLeft {
  const char* name;
  tcflag_t input = 0, output = 0, local = 0;  // modes switched on
  tcflag_t control = 0;                       // modes changed, as a serial port's driver tells them
  std::string bytes = "";
  bool isScanning = false;
};

const cLeft LEFT[] = {
    // Each would catch that its modes are left on, which makes ..
    // .. commands come back as answers, lines wait for an end that they never get;
    {"Cooked", ICRNL | IXON | BRKINT, OPOST | ONLCR, ICANON | ECHO | ECHOE | ECHOK | ISIG | IEXTEN},
    // .. commands wait for ever behind one byte of an old answer;
    {"FlowControl", IXON | IXOFF, 0, 0, 0, "\x13"},
    // .. every byte wrong, on a line whose sensor has 8 bits and no parity.
    {"SevenBits", INPCK | ISTRIP, 0, 0, (CS8 ^ CS7) | PARENB},
    // Would catch: old bytes, half a record, taken for the first answer.
    {"StaleBytes", 0, 0, 0, 0, "000725010;3\n99b\n0123"},
    // Would catch: another program's scans taken for answers, or for one's own. SCIP 1.x has none.
    {"StaleStream", 0, 0, 0, 0, "", true},
};

void leave(cSimSensor& sensor, const cLeft& row) {
  syscalls::control = 0;
  const int port = open(sensor.getPath().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
  termios modes = {};
  ASSERT_EQ(tcgetattr(port, &modes), 0);
  modes.c_iflag |= row.input;
  modes.c_oflag |= row.output;
  modes.c_lflag |= row.local;
  ASSERT_EQ(tcsetattr(port, TCSANOW, &modes), 0);
  sensor.inject(row.bytes);
  ASSERT_TRUE(sensor.waitFor(&cSimCounters::bytesWritten, row.bytes.size(), LONG_TIME));
  close(port);
  syscalls::control = row.control;
}

class cUsedPort : public testing::TestWithParam<cLeft> {};

TEST_P(cUsedPort, IsTakenOver) {
  inBothDialects([](eSimDialect dialect) {
    cSimSetting setting = paced(dialect);
    setting.scanningAtStart = GetParam().isScanning;
    cFaultRig rig(setting);
    leave(rig.sensor, GetParam());
    // Before SCIP 1.x is asked for, "VV" and "TM2" must have failed.
    const int most = dialect == SCIP1 ? 3 * READ + 2 * ANSWER : ANSWER;
    rig.during("create", most, [&] { rig.detect(); });
    ASSERT_TRUE(rig.driver);
    const termios& now = syscalls::wanted;
    EXPECT_EQ(now.c_cflag & (CSIZE | PARENB), static_cast<tcflag_t>(CS8));
    EXPECT_EQ(now.c_iflag & (ICRNL | IXON | BRKINT | ISTRIP), 0U);
    EXPECT_EQ((now.c_oflag & OPOST) | (now.c_lflag & (ICANON | ECHO | ISIG)), 0U);
    EXPECT_TRUE(stopLeftScan(rig.face()));
    rig.startScan();
    for (int scan = 0; scan < 3; ++scan) rig.expectTrueScan();
    EXPECT_EQ(rig.told + rig.lies, 0);
    rig.face().stopAll();
  });
}

INSTANTIATE_TEST_SUITE_P(Modes, cUsedPort, testing::ValuesIn(LEFT), cCaseName());

}  // namespace
