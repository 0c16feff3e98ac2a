#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <regex>

#include "sim/tarvosim.h"
#include "tests/support/cCaseName.h"
#include "tests/support/cPtyPair.h"
#include "tests/tools/cProgram.h"
#include "tests/tools/cTempFolder.h"

namespace {

/// What a command said to its user about `device`, as the documentation has it: its device and its
/// names; every number is one.
std::string asDocumented(std::string text, const std::string& device) {
  for (const auto& [said, documented] : std::vector<std::pair<std::string, std::string>>{
           {device, "/dev/ttyACM0"},
           {" nobody'", " alice'"},
           {" sh \\(process", " ModemManager (process"},
           {"[0-9][0-9.]*", "1"}}) {
    text = std::regex_replace(text, std::regex(said), documented);
  }
  return text;
}

/// What a command says; its second word is the device.
std::string run(const std::vector<std::string>& words) {
  return asDocumented(runProgram(words).errors, words[1]);
}

std::string forbidden() {
  if (geteuid() != 0) return "";
  const cPtyPair line;
  constexpr gid_t DIALOUT = 20;  // of every Debian
  EXPECT_EQ(chown(line.getPath().c_str(), 0, DIALOUT), 0);
  EXPECT_EQ(chmod(line.getPath().c_str(), 0660), 0);
  return asDocumented(runAsNobody({"info", line.getPath()}).errors, line.getPath());
}

std::string inUse() {
  const cSimSensor sensor{cSimSetting{}};
  cProgram other({"-c", "exec 3<>" + sensor.getPath() + "; echo ready; kill -STOP $$"},
                 {"/bin/sh"});
  other.readLine();
  return run({"info", sensor.getPath()});
}

std::string silent() { return run({"info", cPtyPair().getPath(), "--speed", "115200"}); }

std::string wrongSpeed() {
  cSimSetting setting;
  setting.speed = 19200;
  setting.garbage = eSimGarbage::LINES;  // what it hears makes lines, which it answers
  const cSimSensor sensor(setting);
  return run({"info", sensor.getPath(), "--speed", "115200"});
}

std::string leftRunning() {
  cSimSetting setting;
  setting.scanningAtStart = true;
  const cSimSensor sensor(setting);
  const std::string said = run({"info", sensor.getPath()});
  return sensor.isScanning() ? "it was not stopped" : said;
}

/// A scan in the middle of which a fault begins. As a session leader, which gets the port as its
/// terminal, and SIGHUP when that goes.
std::string disturbed(eSimFault fault) {
  cSimSensor sensor{cSimSetting{}};
  cProgram scan({PROGRAM_PATH, "scan", sensor.getPath(), "-n", "0"}, {"/usr/bin/setsid"});
  for (int line = 0; line < 3; ++line) scan.readLine();
  sensor.setFault(fault);
  EXPECT_EQ(scan.wait(std::chrono::seconds(30)), 4);
  return asDocumented(scan.getErrors(), sensor.getPath());
}

std::string pulled() { return disturbed(eSimFault::UNPLUGGED); }
std::string stopped() { return disturbed(eSimFault::STALL); }
std::string missing() { return run({"info", "/dev/no-tty"}); }

/// 682 readings on a line that is too slow for the sensor's ten scans a second.
std::string slow() {
  cSimSetting setting;
  setting.speed = 115200;
  const cSimSensor sensor(setting);
  const std::string path = sensor.getPath();
  const std::string said = runProgram({"scan", path, "-n", "5", "--speed", "115200"}).errors;
  EXPECT_LT(std::stod(said.substr(said.find(" scans, ") + 8)), 9.0) << said;
  return asDocumented(said, path);
}

struct cTrouble {
  const char* name;
  const char* heading;
  std::string (*provoke)();
};

const cTrouble TROUBLES[] = {{"Forbidden", "You may not open the device", forbidden},
                             {"InUse", "Another program has the port", inUse},
                             {"Missing", "The device has another name today", missing},
                             {"Silent", "No sensor answers", silent},
                             {"WrongSpeed", "Wrong line speed", wrongSpeed},
                             {"LeftRunning", "A stream was left running", leftRunning},
                             {"Pulled", "The plug was pulled", pulled},
                             {"Stopped", "The scans stop, the device is there", stopped},
                             {"Slow", "Scans come slowly or late", slow}};

class TroubleshootingTest : public testing::TestWithParam<cTrouble> {};

}  // namespace

// Would catch words, a status or a reaction of the program that its users would look for in vain,
// and a scan that waits for ever for its sensor.
TEST_P(TroubleshootingTest, QuotesTheProgramWordForWord) {
  const std::string page = readFile(SOURCE_PATH "/docs/troubleshooting.md");
  const std::size_t heading = page.find(std::string("\n## ") + GetParam().heading + "\n");
  ASSERT_NE(heading, std::string::npos) << "no such section";
  const std::size_t begin = page.find("```\n", heading) + 4;
  const std::string quoted = page.substr(begin, page.find("```", begin) - begin);
  const std::string said = GetParam().provoke();
  if (said.empty()) GTEST_SKIP() << "only root can become another user";
  EXPECT_TRUE(holds(said, asDocumented(quoted, "/dev/ttyACM0")));
}

INSTANTIATE_TEST_SUITE_P(All, TroubleshootingTest, testing::ValuesIn(TROUBLES), cCaseName());
