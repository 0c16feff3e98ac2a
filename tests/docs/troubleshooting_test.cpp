#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <functional>

#include "sim/tarvosim.h"
#include "tests/docs/cDocument.h"
#include "tests/support/cCaseName.h"
#include "tests/support/cPtyPair.h"

namespace {

const std::string DOCUMENTED_DEVICE = "/dev/ttyACM0";

void replaceAll(std::string& text, const std::string& what, const std::string& by) {
  for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += by.size()) {
    text.replace(at, what.size(), by);
  }
}

/// What a command said to its user about `device`, as the documentation has it: its device and its
/// names; every number is one.
std::string asDocumented(std::string text, const std::string& device) {
  replaceAll(text, device, DOCUMENTED_DEVICE);
  replaceAll(text, " nobody'", " alice'");
  replaceAll(text, " sh (process", " ModemManager (process");
  std::string same;
  for (std::size_t at = 0; at < text.size();) {
    const bool isNumber = std::isdigit(static_cast<unsigned char>(text[at])) != 0;
    same += isNumber ? '1' : text[at];
    const std::size_t end = text.find_first_not_of("0123456789.", at);
    at = isNumber ? std::min(end, text.size()) : at + 1;
  }
  return same;
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
  const cPtyPair line;
  constexpr gid_t DIALOUT = 20;  // of every Debian
  if (chown(line.getPath().c_str(), 0, DIALOUT) != 0) return "";
  chmod(line.getPath().c_str(), 0660);
  return asDocumented(runAsNobody({"info", line.getPath()}).errors, line.getPath());
}

std::string inUse() {
  const cSimSensor sensor{cSimSetting{}};
  cProgram other({"-c", "exec 3<>" + sensor.getPath() + "; echo ready; kill -STOP $$"},
                 {{}, eSetting::PIPES, "/bin/sh"});
  other.readLine();
  return run({"info", sensor.getPath()}, sensor.getPath());
}

std::string missing() { return run({"info", "/dev/tty-of-nobody"}, "/dev/tty-of-nobody"); }

std::string silent() {
  const cPtyPair line;
  return run({"info", line.getPath(), "--speed", "115200"}, line.getPath());
}

std::string wrongSpeed() {
  cSimSetting setting;
  setting.speed = 19200;
  setting.garbage = eSimGarbage::LINES;  // what it hears makes lines, which it answers
  return runOn(setting, {"info", "--speed", "115200"});
}

std::string leftRunning() {
  cSimSetting setting;
  setting.scanningAtStart = true;
  const cSimSensor sensor(setting);
  const std::string said = run({"info", sensor.getPath()}, sensor.getPath());
  return sensor.isScanning() ? "it was not stopped" : said;
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

std::string pulled() {
  return disturbed([](cSimSensor& sensor) { sensor.unplug(); });
}

std::string stopped() {
  return disturbed([](cSimSensor& sensor) { sensor.setFault(eSimFault::STALL); });
}

std::string slow() {
  cSimSetting setting;
  setting.rate = 6;
  return runOn(setting, {"scan", "-n", "3"});
}

}  // namespace

struct cTroubleCase {
  const char* name;
  const char* heading;
  std::string (*provoke)();
  bool needsRoot = false;
};

void PrintTo(const cTroubleCase& trouble, std::ostream* out) { *out << trouble.name; }

class TroubleshootingTest : public testing::TestWithParam<cTroubleCase> {};

TEST_P(TroubleshootingTest, QuotesTheProgramWordForWord) {
  if (GetParam().needsRoot && geteuid() != 0) GTEST_SKIP() << "only root can become another user";
  const std::string page = readFile(SOURCE_PATH "/docs/troubleshooting.md");
  const std::size_t heading = page.find(std::string("\n## ") + GetParam().heading + "\n");
  ASSERT_NE(heading, std::string::npos) << "no such section";
  const std::size_t begin = page.find("```\n", heading) + 4;
  const std::string quoted = page.substr(begin, page.find("```", begin) - begin);
  const std::string said = GetParam().provoke();
  EXPECT_NE(said.find(asDocumented(quoted, DOCUMENTED_DEVICE)), std::string::npos)
      << "quoted:\n"
      << quoted << "said:\n"
      << said;
}

INSTANTIATE_TEST_SUITE_P(
    All, TroubleshootingTest,
    testing::Values(cTroubleCase{"Forbidden", "You may not open the device", forbidden, true},
                    cTroubleCase{"InUse", "Another program has the port", inUse},
                    cTroubleCase{"Missing", "The device has another name today", missing},
                    cTroubleCase{"Silent", "No sensor answers", silent},
                    cTroubleCase{"WrongSpeed", "Wrong line speed", wrongSpeed},
                    cTroubleCase{"LeftRunning", "A stream was left running", leftRunning},
                    cTroubleCase{"Pulled", "The plug was pulled", pulled},
                    cTroubleCase{"Stopped", "The scans stop, the device is there", stopped},
                    cTroubleCase{"Slow", "Scans come slowly or late", slow}),
    cCaseName());
