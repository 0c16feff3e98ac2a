#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <functional>
#include <regex>

#include "sim/tarvosim.h"
#include "tests/support/cCaseName.h"
#include "tests/support/cPtyPair.h"
#include "tests/tools/cProgram.h"
#include "tests/tools/cTempFolder.h"

namespace {

const std::string DOCUMENTED_DEVICE = "/dev/ttyACM0";

/// What a command said to its user about `device`, as the documentation has it: its device and its
/// names; every number is one.
std::string asDocumented(std::string text, const std::string& device) {
  for (const auto& [said, documented] : std::vector<std::pair<std::string, std::string>>{
           {device, DOCUMENTED_DEVICE},
           {" nobody'", " alice'"},
           {" sh \\(process", " ModemManager (process"},
           {"[0-9][0-9.]*", "1"}}) {
    text = std::regex_replace(text, std::regex(said), documented);
  }
  return text;
}

std::string run(const std::vector<std::string>& arguments, const std::string& device) {
  return asDocumented(runProgram(arguments).errors, device);
}

std::string runOn(const cSimSetting& setting, std::vector<std::string> arguments) {
  const cSimSensor sensor(setting);
  arguments.insert(arguments.begin() + 1, sensor.getPath());
  return run(arguments, sensor.getPath());
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
                 {{}, eSetting::PIPES, "/bin/sh"});
  other.readLine();
  return run({"info", sensor.getPath()}, sensor.getPath());
}

/// A scan in the middle of which something happens to the sensor.
std::string disturbed(const std::function<void(cSimSensor&)>& disturb) {
  cSimSensor sensor{cSimSetting{}};
  cProgram scan({"scan", sensor.getPath(), "-n", "0"});
  for (int line = 0; line < 3; ++line) scan.readLine();
  disturb(sensor);
  scan.wait();
  return asDocumented(scan.getErrors(), sensor.getPath());
}

struct cTrouble {
  const char* name;
  const char* heading;
  std::string (*provoke)();
};

const cTrouble TROUBLES[] = {
    {"Forbidden", "You may not open the device", forbidden},
    {"InUse", "Another program has the port", inUse},
    {"Missing", "The device has another name today",
     [] {
       return run({"info", "/dev/tty-of-nobody"}, "/dev/tty-of-nobody");
     }},
    {"Silent", "No sensor answers",
     [] {
       const cPtyPair line;
       return run({"info", line.getPath(), "--speed", "115200"}, line.getPath());
     }},
    {"WrongSpeed", "Wrong line speed",
     [] {
       cSimSetting setting;
       setting.speed = 19200;
       setting.garbage = eSimGarbage::LINES;  // what it hears makes lines, which it answers
       return runOn(setting, {"info", "--speed", "115200"});
     }},
    {"LeftRunning", "A stream was left running",
     [] {
       cSimSetting setting;
       setting.scanningAtStart = true;
       const cSimSensor sensor(setting);
       const std::string said = run({"info", sensor.getPath()}, sensor.getPath());
       return sensor.isScanning() ? "it was not stopped" : said;
     }},
    {"Pulled", "The plug was pulled",
     [] { return disturbed([](cSimSensor& sensor) { sensor.unplug(); }); }},
    {"Stopped", "The scans stop, the device is there",
     [] { return disturbed([](cSimSensor& sensor) { sensor.setFault(eSimFault::STALL); }); }},
    {"Slow", "Scans come slowly or late",
     [] {
       cSimSetting setting;
       setting.rate = 6;
       return runOn(setting, {"scan", "-n", "3"});
     }},
};

class TroubleshootingTest : public testing::TestWithParam<cTrouble> {};

}  // namespace

TEST_P(TroubleshootingTest, QuotesTheProgramWordForWord) {
  const std::string page = readFile(SOURCE_PATH "/docs/troubleshooting.md");
  const std::size_t heading = page.find(std::string("\n## ") + GetParam().heading + "\n");
  ASSERT_NE(heading, std::string::npos) << "no such section";
  const std::size_t begin = page.find("```\n", heading) + 4;
  const std::string quoted = page.substr(begin, page.find("```", begin) - begin);
  const std::string said = GetParam().provoke();
  if (said.empty()) GTEST_SKIP() << "only root can become another user";
  EXPECT_TRUE(holds(said, asDocumented(quoted, DOCUMENTED_DEVICE)));
}

INSTANTIATE_TEST_SUITE_P(All, TroubleshootingTest, testing::ValuesIn(TROUBLES), cCaseName());
