#include "tests/support/cCaseName.h"
#include "tests/tools/cProgram.h"

// Would catch the data stream taken before the command line was read.
TEST(ProgramUsageTest, helpAndVersionGoToStandardOutput) {
  EXPECT_TRUE(holds(runProgram({"--help"}).output, "scan"));
  EXPECT_TRUE(holds(runProgram({"scan", "--help"}).output, "--max-distance"));
  const cResult version = runProgram({"--version"});
  EXPECT_EQ(version.status, 0);
  EXPECT_EQ(version.output, "tarvolink 2.0.0\n");
}

struct cBadInput {
  const char* name;
  std::vector<std::string> arguments;
  int status;
  const char* said;          // part of the message
  bool needsSensor = false;  // it takes a sensor's figures to tell
};

class ProgramBadInput : public testing::TestWithParam<cBadInput> {};

// Would catch bad input found out only after a search, or reported without the cure.
TEST_P(ProgramBadInput, isRefusedWithTheCure) {
  const cResult result = runProgram(GetParam().arguments);
  EXPECT_EQ(result.status, GetParam().status);
  EXPECT_EQ(result.output, "");
  EXPECT_TRUE(holds(result.errors, GetParam().said));
  const bool hasSearched = bool(holds(result.errors, "looking for a sensor"));
  EXPECT_EQ(hasSearched, GetParam().needsSensor) << "told too late, or too early";
}

INSTANTIATE_TEST_SUITE_P(
    All, ProgramBadInput,
    testing::Values(
        cBadInput{"noCommand", {}, 2, "subcommand"},
        cBadInput{"unknownCommand", {"dance"}, 2, "dance"},
        cBadInput{"unknownOption", {"info", "--dance"}, 2, "--dance"},
        cBadInput{"noNumber", {"scan", "-n", "many"}, 2, "many"},
        cBadInput{"unknownFormat", {"scan", "--format", "xml"}, 2, "xml"},
        cBadInput{"unknownFault", {"sim", "--fault", "hail"}, 2, "garbage, forced-byte"},
        cBadInput{"faultWithoutNumber", {"sim", "--fault", "late=soon"}, 2, "\"soon\""},
        cBadInput{"unknownSpeed", {"info", "--speed", "12345"}, 2, "115200"},
        cBadInput{"unknownModel", {"sim", "--model", "huge"}, 2, "huge"},
        cBadInput{"numberAsFormat", {"scan", "--format", "1"}, 2, "none of {csv,json,table}"},
        cBadInput{"emptyDevice", {"scan", ""}, 2, "leave it out"},
        cBadInput{"misspeltPart", {"sim", "--only", "scans"}, 2, "\"scans\" is not scan"},
        cBadInput{"simWithoutColon", {"scan", "sim"}, 1, "\"sim:\", with the colon"},
        cBadInput{"missingDevice", {"info", "/dev/no-tty"}, 1, "Is the sensor plugged in?"},
        cBadInput{"noTerminal", {"scan", "/dev/null"}, 1, "Give the path of a serial device"},
        cBadInput{"unknownSimModel", {"info", "sim:huge"}, 1, "\"huge\" is no model"},
        cBadInput{"negativeCount", {"scan", "-n", "-1", "sim:"}, 1, "-n -1"},
        cBadInput{"clusterOf3Digits", {"scan", "--cluster", "100"}, 1, "from 0 to 99"},
        cBadInput{"intervalOf2Digits", {"scan", "--interval", "10"}, 1, "from 0 to 9"},
        cBadInput{"stepOf5Digits", {"scan", "--last", "10000"}, 1, "from 0 to 9999"},
        cBadInput{"order", {"scan", "--first", "400", "--last", "300"}, 1, "smaller one first"},
        cBadInput{"stepBelow", {"scan", "--first", "43"}, 1, "from 44 to 725", true},
        cBadInput{"stepAbove", {"scan", "--last", "726"}, 1, "from 44 to 725", true},
        cBadInput{"noDistance", {"scan", "--max-distance", "0"}, 1, "above 0"},
        cBadInput{"readings43", {"scan", "--last", "86"}, 1, "one step more or fewer", true},
        cBadInput{"oneFileForBoth", {"scan", "-o", "/tmp/x", "--plot", "/tmp/./x"}, 1, "are both"},
        cBadInput{"impossibleSpeed", {"sim", "--speed", "12345"}, 1, "12345"}),
    cCaseName());
