#include <optional>
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

struct cTrouble {
  const char* name;
  const char* heading;
  const char* line;  // of a shell; DEVICE is the sensor's path, $P the program
  int status;
  int speed = 0;
  eSimGarbage garbage = eSimGarbage::BY_SEED;
  bool isScanning = false;              // before
  std::optional<eSimFault> fault = {};  // begins in the middle of the scan
};

const char* const ASK = "exec $P info DEVICE --speed 115200";
// As a session leader, which gets the port as its terminal, and SIGHUP when that goes.
const char* const SCAN = "exec setsid $P scan DEVICE -n 0";
const cTrouble TROUBLES[] = {
    // Only root can become another user; 20 is the group dialout of every Debian.
    {"Forbidden", "You may not open the device",
     "[ $(id -u) -gt 0 ] || { chown 0:20 DEVICE; chmod 660 DEVICE; exec setpriv --reuid=65534 "
     "--regid=65534 --clear-groups --inh-caps=+dac_read_search --ambient-caps=+dac_read_search "
     "$P info DEVICE; }",
     1},
    {"InUse", "Another program has the port", "exec 3<>DEVICE; $P info DEVICE 3>&-; exit $?", 1},
    {"Missing", "The device has another name today", "exec $P info /dev/no-tty", 1},
    // What it receives makes no lines, or some, which it answers.
    {"Silent", "No sensor answers", ASK, 3, 19200, eSimGarbage::NO_LINES},
    {"WrongSpeed", "Wrong line speed", ASK, 3, 19200, eSimGarbage::LINES},
    {"LeftRunning", "A stream was left running", "exec $P info DEVICE", 0, 0, {}, true},
    {"Pulled", "The plug was pulled", SCAN, 4, 0, {}, false, eSimFault::UNPLUGGED},
    {"Stopped", "The scans stop, the device is there", SCAN, 4, 0, {}, false, eSimFault::STALL},
    {"Slow", "Scans come slowly or late", "exec $P scan DEVICE -n 5", 0, 115200}};

class Troubleshooting : public testing::TestWithParam<cTrouble> {};

// Catches: words, an exit status or a reaction of the program that its users would look for in
// vain, and a scan that waits for ever for its sensor.
TEST_P(Troubleshooting, QuotesTheProgramWordForWord) {
  const cTrouble& trouble = GetParam();
  const std::string page = readFile(SOURCE_PATH "/docs/troubleshooting.md");
  const std::size_t heading = page.find(std::string("\n## ") + trouble.heading + "\n");
  ASSERT_NE(heading, std::string::npos) << "no such section";
  const std::size_t begin = page.find("```\n", heading) + 4;
  cSimSetting setting;
  setting.speed = trouble.speed;
  setting.garbage = trouble.garbage;
  setting.scanningAtStart = trouble.isScanning;
  cSimSensor sensor(setting);
  const std::string line = std::regex_replace(trouble.line, std::regex("DEVICE"), sensor.getPath());
  cProgram program({"-c", line}, {"/bin/sh", {"P=" PROGRAM_PATH}});
  for (int row = 0; trouble.fault && row < 3; ++row) program.readLine();
  if (trouble.fault) sensor.setFault(*trouble.fault);
  const int status = program.wait();
  if (program.getErrors().empty()) GTEST_SKIP() << "only root can become another user";
  EXPECT_EQ(status, trouble.status);
  EXPECT_EQ(program.getOutput().empty(), status != 0 && !trouble.fault) << program.getOutput();
  EXPECT_TRUE(holds(asDocumented(program.getErrors()),
                    asDocumented(page.substr(begin, page.find("```", begin) - begin))));
  EXPECT_TRUE(comesToRest(sensor)) << "it was not stopped";
}

INSTANTIATE_TEST_SUITE_P(All, Troubleshooting, testing::ValuesIn(TROUBLES), cCaseName());

}  // namespace
