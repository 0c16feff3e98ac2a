#include <gtest/gtest.h>

#include <chrono>
#include <csignal>

#include "tests/support/cCaseName.h"
#include "tests/support/cPtyPair.h"
#include "tests/support/cScriptedPeer.h"
#include "tests/tools/cProgram.h"
#include "tests/tools/cPtyProgram.h"

TEST(ProgramSilenceTest, NoSensorIsStatus3AndNoData) {
  // The library says on standard output that it failed: that must not get among the data.
  const cPtyPair line;
  cProgram program({"info", line.getPath(), "--json"});
  EXPECT_EQ(program.wait(std::chrono::seconds(200)), 3);
  EXPECT_EQ(program.getOutput(), "");
  const std::string& errors = program.getErrors();
  EXPECT_NE(errors.find("no sensor answers on " + line.getPath()), std::string::npos) << errors;
  for (const char* speed : {"115200", "500000", "19200", "57600"}) {
    EXPECT_NE(errors.find(std::string("at ") + speed + " bits/s: nothing\n"), std::string::npos)
        << speed << errors;
  }
  EXPECT_EQ(errors.find('\x1b'), std::string::npos) << "a status line in a pipe";
}

struct cHeardCase {
  const char* name;
  cScriptedPeer::tRule rule;
  const char* heard;
  const char* cure;
};

void PrintTo(const cHeardCase& heard, std::ostream* out) { *out << heard.name; }

class ProgramHeardTest : public testing::TestWithParam<cHeardCase> {};

TEST_P(ProgramHeardTest, TellsWhatWasHeardAndTheCure) {
  const cPtyPair line;
  const cScriptedPeer peer(line, GetParam().rule);
  const cResult result = runProgram({"info", line.getPath(), "--speed", "19200"});
  EXPECT_EQ(result.status, 3);
  EXPECT_NE(result.errors.find(std::string("at 19200 bits/s: ") + GetParam().heard),
            std::string::npos)
      << result.errors;
  EXPECT_NE(result.errors.find(GetParam().cure), std::string::npos) << result.errors;
  EXPECT_EQ(result.errors.find("115200"), std::string::npos) << "another speed was tried";
}

INSTANTIATE_TEST_SUITE_P(
    All, ProgramHeardTest,
    testing::Values(
        cHeardCase{"Nothing", [](const std::string&) { return ""; }, "nothing\n", "powered"},
        cHeardCase{"Garbage", [](const std::string&) { return "\x80\xfe\x11"; }, "garbage (",
                   "another speed"},
        cHeardCase{"OtherDevice", [](const std::string&) { return "$GPGGA,1\r\n"; },
                   "text that is no answer, \"$GPGGA,1\"", "Another kind of device"},
        cHeardCase{"Bridge", [](const std::string& heard) { return heard + "\n"; }, "what was sent",
                   "data wires touch"},
        cHeardCase{"HalfAnAnswer", [](const std::string& heard) { return heard + "\n00"; },
                   "an answer in part", "plugs"}),
    cCaseName());

TEST(ProgramSearchTest, ShowsOnATerminalWhatItTries) {
  const cPtyPair line;
  cPtyProgram program({"info", line.getPath()}, {PROGRAM_PATH, false, {"TERM=xterm"}});
  program.waitFor("115200 bits/s, SCIP 2.0: 0 bytes heard, ");
  program.waitFor("115200 bits/s, SCIP 1.x: 0 bytes heard, ");
  program.waitFor(" s of 64 at most");
  program.type("\x03");
  EXPECT_EQ(program.wait(), 0);
  const std::string& text = program.getText();
  EXPECT_GT(text.rfind("\x1b[J"), text.rfind("at most")) << "the status line stays";
}

class ProgramSearchStopTest : public testing::TestWithParam<int> {};

TEST_P(ProgramSearchStopTest, SignalEndsTheSearchAtOnce) {
  const cPtyPair line;
  cProgram program({"scan", line.getPath()});
  program.waitForError("looking for a sensor");
  const auto before = std::chrono::steady_clock::now();
  program.signal(GetParam());
  EXPECT_EQ(program.wait(), 0);
  EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(1));
}

INSTANTIATE_TEST_SUITE_P(All, ProgramSearchStopTest, testing::Values(SIGINT, SIGTERM, SIGHUP),
                         [](const auto& test) { return sigabbrev_np(test.param); });
