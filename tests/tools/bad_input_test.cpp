#include "tests/tools/cProgram.h"

namespace {

/// As a shell's user types it, behind the program's name.
cResult runLine(const std::string& line) {
  return runProgram({"-c", "exec '" PROGRAM_PATH "' " + line}, {"/bin/sh"});
}

void expectRefusal(const std::string& line, int status, const std::string& said) {
  const cResult result = runLine(line);
  EXPECT_EQ(result.status, status) << line;
  EXPECT_EQ(result.output, "") << line;
  EXPECT_TRUE(holds(result.errors, said)) << line;
  const bool needsSensor =
      line.find("sim: --last") != std::string::npos || line.find("/dev/") != std::string::npos;
  const bool hasSearched = result.errors.find("looking for a sensor") != std::string::npos;
  EXPECT_EQ(hasSearched, needsSensor) << "reported too late, or too early: " << line;
}

}  // namespace

// Would catch the data stream taken before the command line was read, help that differs, and data
// lost without a word.
TEST(ProgramUsage, versionAndHelpGoToStandardOutput) {
  EXPECT_EQ(runProgram({"--version"}).output, "tarvolink 2.0.0\n");
  EXPECT_EQ(runProgram({"help"}).output, runProgram({"--help"}).output);
  EXPECT_EQ(runProgram({"help", "scan"}).output, runProgram({"scan", "--help"}).output);
  for (const std::string request : {"--help", "-V", "help"}) {
    const cResult full =
        runProgram({"-c", PROGRAM_PATH " " + request + " >/dev/full"}, {"/bin/sh"});
    EXPECT_TRUE(full.status == 1 &&
                holds(full.errors, "cannot write to standard output: No space"));
  }
}

// Would catch an unset shell variable taken for 0, "010" for 8, and a number cut at a letter.
TEST(ProgramUsage, malformedNumbersAreRefusedByTheirOptionsName) {
  for (const std::string option : {"scan -n", "scan --first", "scan --last", "view --cluster",
                                   "view --interval", "scan --max-distance", "info --speed",
                                   "view --duration", "sim --speed", "sim --seed", "sim --rate"}) {
    for (const std::string value : {"", "=1x", "1x", " 1", "0x1", "+1", "1e999", "nan"}) {
      const std::string name = option.substr(option.find('-'));
      expectRefusal(option + " '" + value + "'", 2, name + ": \"" + value + "\" is not a");
    }
  }
}

// Would catch bad input found out only after a search, or reported without the cure.
TEST(ProgramUsage, badInputIsRefusedWithTheCure) {
  expectRefusal("", 2, "A command (list");
  expectRefusal("scna", 2, "\"scna\": did you mean \"scan\"?");
  expectRefusal("scan --first= 5", 2, "--first: nothing follows the \"=\"");
  expectRefusal("scan ''", 2, "DEVICE: is empty: name a device, or leave it out");
  expectRefusal("scan --format 1", 2, "not one of {csv,json,table}");
  expectRefusal("scan --json --format csv", 2, "--json and another --format");
  expectRefusal("sim --fault split=1x", 2, "--fault: \"1x\" is not a whole number");
  expectRefusal("sim --speed 12345", 1, "57600, 115200, 230400");
  expectRefusal("scan", 1, "'sim:' is a simulated sensor");
  expectRefusal("scan sim", 1, "did you mean \"sim:\"?");
  expectRefusal("scan /dev/null", 1, "Give the path of a serial device");
  expectRefusal("info '/dev/a\nb'", 1, "cannot open /dev/a\\x0ab: ");
  expectRefusal("scan sim: -n -1", 1, "-n -1");
  expectRefusal("scan sim: --duration 0", 1, "--duration 0 is not possible");
  expectRefusal("scan --cluster 100", 1, "from 0 to 99");
  expectRefusal("scan -o /tmp/x --plot /tmp/./x", 1, "are both to go to /tmp/./x");
  expectRefusal("scan sim: --last 726", 1, "from 44 to 725");
  expectRefusal("scan /tty --fault stall", 1, "--fault is for simulated sensors");
}
