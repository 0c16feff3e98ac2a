// What a path may be instead of a sensor's, and how the port's former user may have left it.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "tests/faults/cFaultOracle.h"
#include "tests/support/cCaseName.h"
#include "tests/tools/cTempFolder.h"

namespace {

// --- no sensor ---------------------------------------------------------------------------

struct cPath {
  const char* name;
  std::function<std::string(const cTempFolder&)> make;
  const char* message;
};

std::ostream& operator<<(std::ostream& out, const cPath& row) { return out << row.name; }

std::string makeFile(const cTempFolder& folder) {
  std::ofstream(folder / "file") << "kept";
  return folder / "file";
}

/// A file that nobody may open; root may all the same, so the rest runs as somebody else.
std::string makeForbidden(const cTempFolder& folder) {
  const std::string path = makeFile(folder);
  chmod(path.c_str(), 0);
  if (geteuid() == 0) {
    EXPECT_EQ(seteuid(65534), 0);
  }
  return path;
}

const cPath PATHS[] = {
    // Would catch: a search through all speeds, a minute long, on what is no terminal.
    {"Missing", [](const cTempFolder& folder) { return folder / "none"; }, "No such file"},
    {"Forbidden", makeForbidden, "Permission denied"},
    {"Folder", [](const cTempFolder& folder) { return folder / ""; }, "Is a directory"},
    {"Null", [](const cTempFolder&) { return std::string("/dev/null"); }, "ioctl"},
    // Would catch: commands written into somebody's file.
    {"File", makeFile, "ioctl"},
    {"DanglingLink",
     [](const cTempFolder& folder) {
       std::filesystem::create_symlink(folder / "none", folder / "link");
       return folder / "link";
     },
     "No such file"},
};

class cNoSensor : public testing::TestWithParam<cPath> {};

TEST_P(cNoSensor, IsToldAtOnce) {
  const cTempFolder folder;
  const cSimSensor sensor{cSimSetting()};
  cFaultOracle oracle(sensor);
  const std::string path = GetParam().make(folder);
  const cOutput output = outputOf([&] {
    oracle.during("create", 0, [&] { EXPECT_FALSE(cSensorDriverManager::create(path)); });
  });
  if (getuid() == 0) {
    EXPECT_EQ(seteuid(0), 0);
  }
  EXPECT_NE(output.err.find(GetParam().message), std::string::npos) << output.err;
  EXPECT_NE(output.out.find("[" + path + "]"), std::string::npos) << output.out;
  if (std::filesystem::is_regular_file(path)) {
    chmod(path.c_str(), 0600);
    EXPECT_EQ(readFile(path), "kept");
  }
}

INSTANTIATE_TEST_SUITE_P(Paths, cNoSensor, testing::ValuesIn(PATHS), cCaseName());

// --- a port that was used before ---------------------------------------------------------

struct cLeft {
  const char* name;
  eSimDialect dialect;
  void (*leave)(cSimSensor& sensor, termios& modes);
};

std::ostream& operator<<(std::ostream& out, const cLeft& row) { return out << row.name; }

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

void leaveNothing(cSimSensor&, termios&) {}

const cLeft LEFT[] = {
    // Would catch: commands that come back as answers, lines that wait for an end they never get.
    {"Cooked", eSimDialect::SCIP2, cook},
    {"CookedScip1", eSimDialect::SCIP1, cook},
    {"FlowControl", eSimDialect::SCIP2, leaveFlowControl},
    {"FlowControlScip1", eSimDialect::SCIP1, leaveFlowControl},
    {"SevenBits", eSimDialect::SCIP2, leaveSevenBits},
    {"SevenBitsScip1", eSimDialect::SCIP1, leaveSevenBits},
    // Would catch: old bytes in front of the first answer.
    {"StaleBytes", eSimDialect::SCIP2, leaveBytes},
    {"StaleBytesScip1", eSimDialect::SCIP1, leaveBytes},
    // Would catch: another program's scans taken for answers, or for one's own.
    {"StaleStream", eSimDialect::SCIP2, leaveNothing},
};

class cUsedPort : public testing::TestWithParam<cLeft> {};

TEST_P(cUsedPort, IsTakenOver) {
  cSimSetting setting = paced(GetParam().dialect);
  setting.scanningAtStart = GetParam().leave == leaveNothing;
  cSimSensor sensor(setting);
  const int port = open(sensor.getPath().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
  termios modes = {};
  ASSERT_EQ(tcgetattr(port, &modes), 0);
  GetParam().leave(sensor, modes);
  ASSERT_EQ(tcsetattr(port, TCSANOW, &modes), 0);
  close(port);

  cFaultOracle oracle(sensor);
  tDriver driver;
  // Before SCIP 1.x is asked for, "VV" and "TM2" must have failed.
  const int most = GetParam().dialect == eSimDialect::SCIP1 ? 3 * READ + 2 * ANSWER : ANSWER;
  oracle.during("create", most, [&] { driver = cSensorDriverManager::create(sensor.getPath()); });
  ASSERT_TRUE(driver);
  iSCIP2IF& face = *driver->getSCIP2IF();
  if (setting.scanningAtStart) {
    EXPECT_TRUE(stopLeftScan(face));
  }
  startScan(face);
  for (int scan = 0; scan < 3; ++scan) oracle.expectTrueScan(face);
  EXPECT_EQ(oracle.told + oracle.lies, 0);
  face.stopAll();
}

INSTANTIATE_TEST_SUITE_P(Modes, cUsedPort, testing::ValuesIn(LEFT), cCaseName());

}  // namespace
