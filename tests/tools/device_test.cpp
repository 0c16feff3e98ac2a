// Ports and who has them. What is said of one that may not be opened, the documentation's tests
// compare.
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <csignal>
#include <nlohmann/json.hpp>

#include "tests/support/cPtyPair.h"
#include "tests/tools/cProgram.h"
#include "tests/tools/simSettings.h"

using nlohmann::json;

namespace {

cStart withDevices(const std::string& paths) {
  return {PROGRAM_PATH, {"TARVOLINK_DEVICES=" + paths}};
}

cResult stty(const std::vector<std::string>& arguments) {
  return runProgram(arguments, {"/bin/stty"});
}

}  // namespace

// Would catch a second reader, which takes bytes away from the first: that goes on unharmed.
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

// Would catch a mode that an earlier program has left, and that damages data or holds them back.
TEST(ProgramPort, isPutRightWhateverAnEarlierProgramLeft) {
  const cSimSensor sensor{cSimSetting{}};
  const std::string& path = sensor.getPath();
  stty({"-F", path, "inlcr", "igncr", "istrip", "ixon", "ixoff", "-clocal", "icanon", "echo"});
  stty({"-F", path, "-icanon", "min", "200", "time", "5"});
  EXPECT_EQ(runProgram({"info", path}).status, 0);
  const std::string now = stty({"-F", path, "-a"}).output;
  for (const char* mode :
       {"-inlcr -igncr", "-istrip", "-ixon -ixoff", " clocal", "min = 1; time = 0"}) {
    EXPECT_TRUE(holds(now, mode));
  }
}

// Would catch a device in use that is probed, which takes bytes away from its user, or is not told,
// and bytes sent to one that is not to be probed.
TEST(ProgramList, tellsInJsonWhatIsThereAndWhoHasIt) {
  const cSimSensor sensor{cSimSetting{}};
  const cSimSensor held{cSimSetting{}};
  cProgram other({"-c", "exec 3<>" + held.getPath() + "; echo ready; exec sleep 600"}, {"/bin/sh"});
  other.readLine();
  const cStart all = withDevices(sensor.getPath() + ":/dev/tty-of-nobody:" + held.getPath());
  EXPECT_TRUE(holds(runProgram({"list"}, all).output, sensor.getPath() + "\n"));
  EXPECT_EQ(sensor.getCounters().bytesHeard, 0u);
  const cResult result = runProgram({"list", "--json", "--probe"}, all);
  ASSERT_EQ(result.status, 0) << result.errors;
  const json devices = json::parse(result.output);
  ASSERT_EQ(devices.size(), 2u);
  EXPECT_EQ(devices[0]["device"], sensor.getPath());
  EXPECT_EQ(devices[0]["sensor"]["product"], "Simulated short range scanner");
  EXPECT_EQ(devices[1]["held_by"][0]["pid"], other.getPid());
  EXPECT_FALSE(devices[1].contains("sensor")) << "one in use was probed";
  EXPECT_EQ(held.getCounters().bytesHeard, 0u);
}

// Would catch simulated data in place of a sensor's, and a sensor that the program picks itself.
TEST(ProgramDefault, isTheOnlySerialDeviceButAskedForWhereThereAreSeveral) {
  const cSimSensor sensor{cSimSetting{}};
  const cResult found = runProgram({"info"}, withDevices(sensor.getPath()));
  EXPECT_EQ(found.status, 0);
  EXPECT_TRUE(holds(found.errors, "only serial device here, " + sensor.getPath()));
  const cPtyPair other;
  const cResult several =
      runProgram({"info"}, withDevices(sensor.getPath() + ":" + other.getPath()));
  EXPECT_EQ(several.status, 1);
  EXPECT_TRUE(holds(several.errors, "\n  " + sensor.getPath() + "\n  " + other.getPath() + "\n"));
  const cResult none = runProgram({"info"}, withDevices("/dev/tty-of-nobody"));
  EXPECT_EQ(none.status, 1);
  EXPECT_TRUE(holds(none.errors, "TARVOLINK_DEVICES names /dev/tty-of-nobody, which is no device"));
}
