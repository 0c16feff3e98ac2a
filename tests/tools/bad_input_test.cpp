#include <gtest/gtest.h>

#include "tests/support/cCaseName.h"
#include "tests/tools/cProgram.h"

TEST(ProgramUsageTest, HelpAndVersionGoToStandardOutput) {
  // Fails when the data stream is taken before the command line was read.
  EXPECT_NE(runProgram({"--help"}).output.find("scan"), std::string::npos);
  EXPECT_NE(runProgram({"scan", "--help"}).output.find("--max-distance"), std::string::npos);
  EXPECT_EQ(runProgram({"--version"}).output, "tarvolink 2.0.0\n");
  EXPECT_EQ(runProgram({"--version"}).status, 0);
}

struct cBadCase {
  const char* name;
  std::vector<std::string> arguments;
  const char* said;          // part of the message
  bool needsSensor = false;  // it takes a sensor's figures to tell
};

void PrintTo(const cBadCase& bad, std::ostream* out) { *out << bad.name; }

class ProgramUsageErrorTest : public testing::TestWithParam<cBadCase> {};

TEST_P(ProgramUsageErrorTest, EndsWithStatus2) {
  const cResult result = runProgram(GetParam().arguments);
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.output, "");
  EXPECT_NE(result.errors.find(GetParam().said), std::string::npos) << result.errors;
}

INSTANTIATE_TEST_SUITE_P(
    All, ProgramUsageErrorTest,
    testing::Values(cBadCase{"NoCommand", {}, "subcommand"},
                    cBadCase{"UnknownCommand", {"dance"}, "dance"},
                    cBadCase{"UnknownOption", {"info", "--dance"}, "--dance"},
                    cBadCase{"NoNumber", {"scan", "-n", "many"}, "many"},
                    cBadCase{"UnknownFormat", {"scan", "--format", "xml"}, "xml"},
                    cBadCase{"UnknownFault", {"sim", "--fault", "hail"}, "garbage, forced-byte"},
                    cBadCase{"FaultWithoutNumber", {"sim", "--fault", "late=soon"}, "\"soon\""},
                    cBadCase{"UnknownSpeed", {"info", "--speed", "12345"}, "115200"},
                    cBadCase{"UnknownModel", {"sim", "--model", "huge"}, "huge"}),
    cCaseName());

class ProgramBadInputTest : public testing::TestWithParam<cBadCase> {};

TEST_P(ProgramBadInputTest, EndsWithStatus1AndTheCure) {
  const cResult result = runProgram(GetParam().arguments);
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.output, "");
  EXPECT_NE(result.errors.find(GetParam().said), std::string::npos) << result.errors;
  const bool hasSearched = result.errors.find("looking for a sensor") != std::string::npos;
  EXPECT_EQ(hasSearched, GetParam().needsSensor) << "told too late, or too early";
}

INSTANTIATE_TEST_SUITE_P(
    All, ProgramBadInputTest,
    testing::Values(
        cBadCase{"MissingDevice", {"info", "/dev/tty-of-nobody"}, "Is the sensor plugged in?"},
        cBadCase{"NoTerminal", {"scan", "/dev/null"}, "Give the path of a serial device"},
        cBadCase{"UnknownSimModel", {"info", "sim:huge"}, "\"huge\" is no model"},
        cBadCase{"NegativeCount", {"scan", "-n", "-1", "sim:"}, "-n -1"},
        cBadCase{"ClusterOfThreeDigits", {"scan", "--cluster", "100"}, "from 0 to 99"},
        cBadCase{"IntervalOfTwoDigits", {"scan", "--interval", "10"}, "from 0 to 9"},
        cBadCase{"StepOfFiveDigits", {"scan", "--last", "10000"}, "from 0 to 9999"},
        cBadCase{"WrongOrder", {"scan", "--first", "400", "--last", "300"}, "smaller one first"},
        cBadCase{"StepBelowTheSensors", {"scan", "--first", "43"}, "from 44 to 725", true},
        cBadCase{"StepAboveTheSensors", {"scan", "--last", "726"}, "from 44 to 725", true},
        cBadCase{"NoDistance", {"scan", "--max-distance", "0"}, "above 0"},
        cBadCase{"UnreadableLastLine",  // 43 readings of three characters
                 {"scan", "--first", "44", "--last", "86"},
                 "one step more or fewer",
                 true},
        cBadCase{"UnwritableFile", {"scan", "-o", "/nowhere/scans.csv"}, "/nowhere/scans.csv"},
        cBadCase{"FolderAsFile", {"scan", "-o", "/tmp"}, "Is a directory"},
        cBadCase{"ImpossibleSpeed", {"sim", "--speed", "12345"}, "12345"}),
    cCaseName());
