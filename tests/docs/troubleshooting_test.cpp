#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <functional>

#include <regex>

#include "sim/tarvosim.h"
#include "tests/support/cCaseName.h"
#include "tests/support/settings.h"
#include "tests/tools/cProgram.h"
#include "tests/tools/cTempFolder.h"

namespace {

/// What a command prints, with the device and the names of the documentation; every number is 1.
std::string asDocumented(std::string text) {
  for (const auto& [printed, documented] : std::vector<std::pair<std::string, std::string>>{
           {"/dev/(pts/[0-9]+|no-tty)", "/dev/ttyACM0"},
           {" nobody'", " alice'"},
           {" sh \\(process", " ModemManager (process"},
           {"[0-9][0-9.]*", "1"}}) {
    text = std::regex_replace(text, std::regex(printed), documented);
  }
  return text;
}

using tProvoke = std::function<cResult(cSimSensor& sensor)>;

/// Runs the program with the sensor's path for the word "DEVICE".
tProvoke run(const std::vector<std::string>& words) {
  return [words](cSimSensor& sensor) {
    std::vector<std::string> arguments = words;
    std::replace(arguments.begin(), arguments.end(), std::string("DEVICE"), sensor.getPath());
    return runProgram(arguments);
  };
}

/// A scan in the middle of which a fault begins. As a session leader, which gets the port as its
/// terminal, and SIGHUP when that goes.
tProvoke disturb(eSimFault fault) {
  return [fault](cSimSensor& sensor) {
    cProgram scan({PROGRAM_PATH, "scan", sensor.getPath(), "-n", "0"}, {"/usr/bin/setsid"});
    for (int line = 0; line < 3; ++line) scan.readLine();
    sensor.setFault(fault);
    const int status = scan.wait();
    return cResult{status, "", scan.getErrors()};
  };
}

cResult askAsNobody(cSimSensor& sensor) {
  constexpr gid_t DIALOUT = 20;  // of every Debian
  const char* const path = sensor.getPath().c_str();
  if (geteuid() != 0 || chown(path, 0, DIALOUT) != 0 || chmod(path, 0660) != 0) return {};
  return runAsNobody({"info", path});
}

cResult askBesideAnother(cSimSensor& sensor) {
  cProgram other({"-c", "exec 3<>" + sensor.getPath() + "; echo ready; kill -STOP $$"},
                 {"/bin/sh"});
  other.readLine();
  return runProgram({"info", sensor.getPath()});
}

struct cTrouble {
  const char* name;
  const char* heading;
  tProvoke provoke;
  int status;
  int speed = 0;
  eSimGarbage garbage = eSimGarbage::BY_SEED;
  bool isScanning = false;  // before
};

const auto ASK = run({"info", "DEVICE", "--speed", "115200"});
const cTrouble TROUBLES[] = {
    {"Forbidden", "You may not open the device", askAsNobody, 1},
    {"InUse", "Another program has the port", askBesideAnother, 1},
    {"Missing", "The device has another name today", run({"info", "/dev/no-tty"}), 1},
    // What it receives makes no lines, or some, which it answers.
    {"Silent", "No sensor answers", ASK, 3, 19200, eSimGarbage::NO_LINES},
    {"WrongSpeed", "Wrong line speed", ASK, 3, 19200, eSimGarbage::LINES},
    {"LeftRunning", "A stream was left running", run({"info", "DEVICE"}), 0, 0, {}, true},
    {"Pulled", "The plug was pulled", disturb(eSimFault::UNPLUGGED), 4},
    {"Stopped", "The scans stop, the device is there", disturb(eSimFault::STALL), 4},
    {"Slow", "Scans come slowly or late", run({"scan", "DEVICE", "-n", "5"}), 0, 115200}};

class Troubleshooting : public testing::TestWithParam<cTrouble> {};

// Catches: words, an exit status or a reaction of the program that its users would look for in
// vain, and a scan that waits for ever for its sensor.
TEST_P(Troubleshooting, QuotesTheProgramWordForWord) {
  const std::string page = readFile(SOURCE_PATH "/docs/troubleshooting.md");
  const std::size_t heading = page.find(std::string("\n## ") + GetParam().heading + "\n");
  ASSERT_NE(heading, std::string::npos) << "no such section";
  const std::size_t begin = page.find("```\n", heading) + 4;
  cSimSetting setting;
  setting.speed = GetParam().speed;
  setting.garbage = GetParam().garbage;
  setting.scanningAtStart = GetParam().isScanning;
  cSimSensor sensor(setting);
  const cResult result = GetParam().provoke(sensor);
  if (result.errors.empty()) GTEST_SKIP() << "only root can become another user";
  EXPECT_EQ(result.status, GetParam().status);
  EXPECT_EQ(result.output.empty(), result.status != 0) << "among the data: " << result.output;
  EXPECT_TRUE(holds(asDocumented(result.errors),
                    asDocumented(page.substr(begin, page.find("```", begin) - begin))));
  EXPECT_TRUE(comesToRest(sensor)) << "it was not stopped";
}

INSTANTIATE_TEST_SUITE_P(All, Troubleshooting, testing::ValuesIn(TROUBLES), cCaseName());

}  // namespace
