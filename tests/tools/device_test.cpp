// Ports and who has them. What is said of one that may not be opened, the documentation's tests
// compare.
#include <fcntl.h>
#include <sys/file.h>
#include <termios.h>
#include <unistd.h>

#include <csignal>
#include <nlohmann/json.hpp>

#include "tests/support/cPtyPair.h"
#include "tests/tools/cProgram.h"
#include "tests/tools/simSettings.h"

using nlohmann::json;

namespace {

cStart withDevices(const std::string& paths) { return {{"TARVOLINK_DEVICES=" + paths}}; }

/// Another program that has a tty open, without a lock.
class cOtherUser {
 public:
  explicit cOtherUser(const std::string& path)
      : program({"-c", "exec 3<>" + path + "; echo ready; exec sleep 600"},
                {{}, eSetting::PIPES, "/bin/sh"}) {
    program.readLine();
  }
  std::string getPid() const { return std::to_string(program.getPid()); }

 private:
  cProgram program;
};

/// Looks at the modes of a tty, or sets them, from outside.
template <typename Action>
termios withModes(const std::string& path, Action action) {
  termios modes{};
  const int fd = open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  tcgetattr(fd, &modes);
  action(modes);
  tcsetattr(fd, TCSANOW, &modes);
  close(fd);
  return modes;
}

}  // namespace

// The first goes on unharmed: a second reader would take bytes away from it.
TEST(ProgramPort, isRefusedWhileAnotherTarvolinkHasIt) {
  const cSimSensor sensor(fastTurning());
  cProgram first({"scan", sensor.getPath(), "-n", "0"});
  for (int line = 0; line < 4; ++line) first.readLine();
  const auto heard = sensor.getCounters().commands;
  const cResult second = runProgram({"info", sensor.getPath()});
  EXPECT_EQ(second.status, 1);
  EXPECT_TRUE(holds(second.errors, "(process " + std::to_string(first.getPid()) + ")"));
  EXPECT_EQ(sensor.getCounters().commands, heard) << "something was sent";
  const int fd = open(sensor.getPath().c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  EXPECT_NE(flock(fd, LOCK_EX | LOCK_NB), 0) << "no lock tells those who cannot see its process";
  close(fd);
  first.readLine();
  first.signal(SIGINT);
  EXPECT_EQ(first.wait(), 0);
  EXPECT_TRUE(holds(first.getErrors(), " 0 dropped"));
}

TEST(ProgramPort, isPutRightWhateverAnEarlierProgramLeft) {
  constexpr tcflag_t HARMFUL = INLCR | IGNCR | ISTRIP | IXON | IXOFF | IXANY;
  const cSimSensor sensor{cSimSetting{}};
  withModes(sensor.getPath(), [](termios& modes) {
    modes.c_iflag |= HARMFUL;
    modes.c_cflag &= ~static_cast<tcflag_t>(CLOCAL);
    modes.c_lflag |= ICANON | ECHO;
    modes.c_cc[VMIN] = 200;
    modes.c_cc[VTIME] = 5;
  });
  const cResult result = runProgram({"info", sensor.getPath()});
  EXPECT_EQ(result.status, 0) << result.errors;
  const termios now = withModes(sensor.getPath(), [](termios&) {});
  EXPECT_EQ(now.c_iflag & HARMFUL, 0u);
  EXPECT_EQ(now.c_cflag & (CLOCAL | CREAD), tcflag_t(CLOCAL | CREAD));
  EXPECT_EQ(now.c_cc[VMIN], 1);
  EXPECT_EQ(now.c_cc[VTIME], 0);
}

TEST(ProgramList, tellsInJsonWhatIsThereAndWhoHasIt) {
  const cSimSensor sensor{cSimSetting{}};
  const cSimSensor held{cSimSetting{}};
  const cOtherUser other(held.getPath());
  const cResult result =
      runProgram({"list", "--json", "--probe"},
                 withDevices(sensor.getPath() + ":/dev/tty-of-nobody:" + held.getPath()));
  ASSERT_EQ(result.status, 0) << result.errors;
  const json devices = json::parse(result.output);
  ASSERT_EQ(devices.size(), 2u);
  EXPECT_EQ(devices[0]["device"], sensor.getPath());
  EXPECT_EQ(devices[0]["may_open"], true);
  EXPECT_EQ(devices[0]["held_by"].size(), 0u);
  EXPECT_EQ(devices[0]["sensor"]["product"], "Simulated short range scanner");
  EXPECT_EQ(std::to_string(devices[1]["held_by"][0]["pid"].get<int>()), other.getPid());
  EXPECT_FALSE(devices[1].contains("sensor")) << "one in use was probed";
  const cResult refused = runProgram({"info", held.getPath()});
  EXPECT_EQ(refused.status, 1);
  EXPECT_TRUE(holds(refused.errors, "(process " + other.getPid() + ")"));
  EXPECT_EQ(held.getCounters().bytesHeard, 0u);
}

TEST(ProgramList, isReadableAndOpensNothing) {
  const cSimSensor sensor{cSimSetting{}};
  const cResult result = runProgram({"list"}, withDevices(sensor.getPath()));
  EXPECT_EQ(result.output.rfind(sensor.getPath() + "\n  owner    ", 0), 0u) << result.output;
  EXPECT_EQ(sensor.getCounters().bytesHeard, 0u);
  EXPECT_EQ(runProgram({"list", "--json"}, withDevices("")).output, "[]\n");
}

// Would catch rows that wait for the slowest device.
TEST(ProgramList, tellsEachDeviceAsItWasAsked) {
  const cSimSensor sensor{cSimSetting{}};
  const cPtyPair silent;
  cProgram program({"list", "--probe"}, withDevices(sensor.getPath() + ":" + silent.getPath()));
  program.waitFor("Simulated short range scanner, SCIP 2.0, 115200 bits/s\n");
  program.waitForError("looking for a sensor on " + silent.getPath());
  program.signal(SIGINT);
  EXPECT_EQ(program.wait(), 0);
}

TEST(ProgramDefault, isTheOnlySerialDeviceButAskedForWhereThereAreSeveral) {
  const cSimSensor sensor{cSimSetting{}};
  const cResult found = runProgram({"info", "--json"}, withDevices(sensor.getPath()));
  ASSERT_EQ(found.status, 0) << found.errors;
  EXPECT_EQ(json::parse(found.output)["device"], sensor.getPath());
  EXPECT_TRUE(holds(found.errors, "only serial device here, " + sensor.getPath()));
  const cPtyPair other;
  const std::string two = sensor.getPath() + ":" + other.getPath();
  const cResult several = runProgram({"info"}, withDevices(two));
  EXPECT_EQ(several.status, 1);
  const std::string listed = "\n  " + sensor.getPath() + "\n  " + other.getPath() + "\n";
  EXPECT_TRUE(holds(several.errors, listed));
  const cResult none = runProgram({"info"}, withDevices("/dev/tty-of-nobody"));
  EXPECT_EQ(none.status, 1) << "simulated data in place of a sensor's";
  EXPECT_TRUE(holds(none.errors, "TARVOLINK_DEVICES names /dev/tty-of-nobody, which is no device"));
}
