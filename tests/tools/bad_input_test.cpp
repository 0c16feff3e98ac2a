#include "tests/support/cCaseName.h"
#include "tests/tools/cProgram.h"

// Would catch the data stream taken before the command line was read.
TEST(ProgramUsageTest, versionGoesToStandardOutput) {
  EXPECT_EQ(runProgram({"--version"}).output, "tarvolink 2.0.0\n");
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
        cBadInput{"unknownFormat", {"scan", "--format", "1"}, 2, "none of {csv,json,table}"},
        cBadInput{"unknownFault", {"sim", "--fault", "hail"}, 2, "garbage, forced-byte"},
        cBadInput{"unknownSpeed", {"info", "--speed", "12345"}, 2, "115200"},
        cBadInput{"unknownSimSpeed", {"sim", "--speed", "12345"}, 1, "57600, 115200, 230400"},
        cBadInput{"emptyDevice", {"scan", ""}, 2, "leave it out"},
        cBadInput{"simWithoutColon", {"scan", "sim"}, 1, "\"sim:\", with the colon"},
        cBadInput{"noTerminal", {"scan", "/dev/null"}, 1, "Give the path of a serial device"},
        cBadInput{"negativeCount", {"scan", "-n", "-1", "sim:"}, 1, "-n -1"},
        cBadInput{"clusterOf3Digits", {"scan", "--cluster", "100"}, 1, "from 0 to 99"},
        cBadInput{"stepAbove", {"scan", "--last", "726"}, 1, "from 44 to 725", true},
        cBadInput{"readings43", {"scan", "--last", "86"}, 1, "one step more or fewer", true},
        cBadInput{"oneFileForBoth", {"scan", "-o", "/tmp/x", "--plot", "/tmp/./x"}, 1, "are both"}),
    cCaseName());
