#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <csignal>
#include <nlohmann/json.hpp>

#include "sim/tarvosim.h"
#include "tests/support/cPtyPair.h"
#include "tests/tools/cProgram.h"

namespace {

const std::string THE_GROUP = "daemon";  // of every Debian, number 1

cStart withDevices(const std::string& paths) {
  cStart start;
  start.environment = {"TARVOLINK_DEVICES=" + paths};
  return start;
}

/// Another program that has a tty open, without a lock.
class cOtherUser {
 public:
  explicit cOtherUser(const std::string& path)
      : program({"-c", "exec 3<>" + path + "; echo ready; exec sleep 600"},
                {"/bin/sh", false, {}}) {
    program.readLine();
  }
  std::string getPid() const { return std::to_string(program.getPid()); }

 private:
  cProgram program;
};

/// The modes of a tty, seen and set from outside.
class cTtyModes {
 public:
  explicit cTtyModes(const std::string& path)
      : fd(open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)) {}
  ~cTtyModes() { close(fd); }
  cTtyModes(const cTtyModes&) = delete;
  cTtyModes& operator=(const cTtyModes&) = delete;

  termios get() const {
    termios modes{};
    tcgetattr(fd, &modes);
    return modes;
  }
  void set(const termios& modes) const { tcsetattr(fd, TCSANOW, &modes); }

 private:
  const int fd;
};

}  // namespace

TEST(ProgramPortTest, IsRefusedWhileAnotherTarvolinkHasIt) {
  // The first goes on unharmed: a second reader would take bytes away from it.
  cSimSetting setting;
  setting.rate = 50;
  const cSimSensor sensor(setting);
  cProgram first({"scan", sensor.getPath(), "-n", "0"});
  for (int line = 0; line < 4; ++line) first.readLine();
  const auto heard = sensor.getCounters().commands;
  const cResult second = runProgram({"info", sensor.getPath()});
  EXPECT_EQ(second.status, 1);
  EXPECT_NE(second.errors.find("(process " + std::to_string(first.getPid()) + ")"),
            std::string::npos)
      << second.errors;
  EXPECT_EQ(sensor.getCounters().commands, heard) << "something was sent";
  first.readLine();
  first.signal(SIGINT);
  EXPECT_EQ(first.wait(), 0);
  EXPECT_NE(first.getErrors().find(" 0 dropped"), std::string::npos) << first.getErrors();
}

TEST(ProgramPortTest, IsRefusedWhileAnyOtherProgramHasIt) {
  const cSimSensor sensor{cSimSetting{}};
  const cOtherUser other(sensor.getPath());
  const cResult result = runProgram({"info", sensor.getPath()});
  EXPECT_EQ(result.status, 1);
  EXPECT_NE(result.errors.find("(process " + other.getPid() + ")"), std::string::npos)
      << result.errors;
  EXPECT_EQ(sensor.getCounters().bytesHeard, 0u);
}

TEST(ProgramPortTest, TellsWhichGroupMayOpenIt) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can become a user who may not";
  const cPtyPair line;
  ASSERT_EQ(chown(line.getPath().c_str(), 0, 1), 0);
  ASSERT_EQ(chmod(line.getPath().c_str(), 0660), 0);
  const cResult result = runProgram(
      {"--reuid=65534", "--regid=65534", "--clear-groups", PROGRAM_PATH, "info", line.getPath()},
      {"/usr/bin/setpriv", false, {}});
  EXPECT_EQ(result.status, 1);
  EXPECT_NE(result.errors.find("sudo usermod -aG " + THE_GROUP + " nobody"), std::string::npos)
      << result.errors;
}

TEST(ProgramPortTest, IsPutRightWhateverAnEarlierProgramLeft) {
  const cSimSensor sensor{cSimSetting{}};
  const cTtyModes slave(sensor.getPath());
  termios odd = slave.get();
  odd.c_iflag |= INLCR | IGNCR | ISTRIP | IXON | IXOFF | IXANY;
  odd.c_cflag &= ~static_cast<tcflag_t>(CLOCAL);
  odd.c_lflag |= ICANON | ECHO;
  odd.c_cc[VMIN] = 200;
  odd.c_cc[VTIME] = 5;
  slave.set(odd);
  const cResult result = runProgram({"info", sensor.getPath()});
  EXPECT_EQ(result.status, 0) << result.errors;
  const termios now = slave.get();
  EXPECT_EQ(now.c_iflag & (INLCR | IGNCR | ISTRIP | IXON | IXOFF | IXANY), 0u);
  EXPECT_EQ(now.c_cflag & (CLOCAL | CREAD), tcflag_t(CLOCAL | CREAD));
  EXPECT_EQ(now.c_cc[VMIN], 1);
  EXPECT_EQ(now.c_cc[VTIME], 0);
}

TEST(ProgramListTest, TellsInJsonWhatIsThereAndWhoHasIt) {
  const cSimSensor sensor{cSimSetting{}};
  const cSimSensor held{cSimSetting{}};
  const cOtherUser other(held.getPath());
  const cResult result =
      runProgram({"list", "--json", "--probe"},
                 withDevices(sensor.getPath() + ":/dev/tty-of-nobody:" + held.getPath()));
  ASSERT_EQ(result.status, 0) << result.errors;
  const auto devices = nlohmann::json::parse(result.output);
  ASSERT_EQ(devices.size(), 2u);
  EXPECT_EQ(devices[0]["device"], sensor.getPath());
  EXPECT_EQ(devices[0]["may_open"], true);
  EXPECT_EQ(devices[0]["held_by"].size(), 0u);
  EXPECT_EQ(devices[0]["sensor"]["product"], "Simulated short range scanner");
  EXPECT_EQ(std::to_string(devices[1]["held_by"][0]["pid"].get<int>()), other.getPid());
  EXPECT_FALSE(devices[1].contains("sensor")) << "one in use was probed";
}

TEST(ProgramListTest, IsReadableAndOpensNothing) {
  const cSimSensor sensor{cSimSetting{}};
  const cResult result = runProgram({"list"}, withDevices(sensor.getPath()));
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output.rfind(sensor.getPath() + "\n  owner    ", 0), 0u) << result.output;
  EXPECT_EQ(sensor.getCounters().bytesHeard, 0u);
  EXPECT_EQ(runProgram({"list", "--json"}, withDevices("")).output, "[]\n");
}

TEST(ProgramDefaultTest, IsTheOnlySerialDevice) {
  const cSimSensor sensor{cSimSetting{}};
  const cResult result = runProgram({"info", "--json"}, withDevices(sensor.getPath()));
  ASSERT_EQ(result.status, 0) << result.errors;
  EXPECT_EQ(nlohmann::json::parse(result.output)["device"], sensor.getPath());
  EXPECT_NE(result.errors.find("only serial device here, " + sensor.getPath()), std::string::npos);
}

TEST(ProgramDefaultTest, IsAskedForWhereThereAreSeveral) {
  const cPtyPair one;
  const cPtyPair two;
  const cResult result = runProgram({"info"}, withDevices(one.getPath() + ":" + two.getPath()));
  EXPECT_EQ(result.status, 1);
  EXPECT_NE(result.errors.find("\n  " + one.getPath() + "\n  " + two.getPath() + "\n"),
            std::string::npos)
      << result.errors;
}
