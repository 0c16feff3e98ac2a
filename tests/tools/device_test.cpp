// Ports and who has them. What is said of one that may not be opened, the documentation's tests
// compare.
#include <nlohmann/json.hpp>

#include "tests/support/cPtyPair.h"
#include "tests/tools/cProgram.h"

namespace {

cStart withDevices(const std::string& paths) {
  return {PROGRAM_PATH, {"TARVOLINK_DEVICES=" + paths}};
}

}  // namespace

// Would catch a mode that an earlier program has left, and that damages data or holds them back.
TEST(ProgramPort, isPutRightWhateverAnEarlierProgramLeft) {
  const cSimSensor sensor{cSimSetting{}};
  const std::string& path = sensor.getPath();
  const std::string stty = "stty -F " + path;
  const std::string spoil = " inlcr igncr istrip ixon ixoff -clocal echo -icanon min 200 time 5";
  const std::string info = " && '" PROGRAM_PATH "' info " + path + " && ";
  const std::string now =
      runProgram({"-c", stty + spoil + info + stty + " -a"}, {"/bin/sh"}).output;
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
  EXPECT_EQ(sensor.getCounters().bytesReceived, 0u);
  const cResult result = runProgram({"list", "--json", "--probe"}, all);
  ASSERT_EQ(result.status, 0) << result.errors;
  const nlohmann::json devices = nlohmann::json::parse(result.output);
  ASSERT_EQ(devices.size(), 2u);
  EXPECT_EQ(devices[0]["device"], sensor.getPath());
  EXPECT_EQ(devices[0]["sensor"]["product"], "Simulated short range scanner");
  EXPECT_EQ(devices[1]["held_by"][0]["pid"], other.getPid());
  EXPECT_FALSE(devices[1].contains("sensor")) << "one in use was probed";
  EXPECT_EQ(held.getCounters().bytesReceived, 0u);
}

// Would catch simulated data in place of a sensor's, and a sensor that the program picks itself.
TEST(ProgramDefault, isTheOnlySerialDeviceButAskedForWhereThereAreSeveral) {
  const cSimSensor sensor{cSimSetting{}};
  const cPtyPair line;
  const std::string &path = sensor.getPath(), &other = line.getPath();
  const cResult found = runProgram({"info"}, withDevices(path));
  EXPECT_TRUE(found.status == 0 && holds(found.errors, "only serial device here, " + path));
  const cResult several = runProgram({"info"}, withDevices(path + ":" + other));
  EXPECT_TRUE(several.status == 1 && holds(several.errors, "\n  " + path + "\n  " + other + "\n"));
  const cResult none = runProgram({"info"}, withDevices(":::/dev/no-tty:"));
  EXPECT_TRUE(none.status == 1 && holds(none.errors, "no DEVICE given, and none that "));
  EXPECT_EQ(none.errors.rfind("tarvolink: TARVOLINK_DEVICES names /dev/no-tty, which", 0), 0u);
}
