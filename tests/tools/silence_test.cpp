// Searches that find nothing: what is said, and how they end.
#include <atomic>
#include <csignal>
#include <thread>

#include "tests/support/cCaseName.h"
#include "tests/support/cPtyPair.h"
#include "tests/support/cScriptedPeer.h"
#include "tests/tools/cProgram.h"

// The library says on standard output that it failed: that must not get among the data.
TEST(ProgramSilence, isStatus3AndNoData) {
  const cPtyPair line;
  cProgram program({"info", line.getPath(), "--json"});
  EXPECT_EQ(program.wait(std::chrono::seconds(200)), 3);
  EXPECT_EQ(program.getOutput(), "");
  const std::string& errors = program.getErrors();
  EXPECT_TRUE(holds(errors, "no sensor answers on " + line.getPath()));
  for (const char* speed : {"115200", "500000", "19200", "57600"}) {
    EXPECT_TRUE(holds(errors, std::string("at ") + speed + " bits/s: nothing\n"));
  }
  EXPECT_FALSE(holds(errors, "\x1b")) << "a status line in a pipe";
}

struct cHeard {
  const char* name;
  std::string (*rule)(const std::string& line);
  const char* heard;
  const char* cure;
};

class ProgramHeard : public testing::TestWithParam<cHeard> {};

// What is said of silence and of garbage, the documentation's tests compare.
TEST_P(ProgramHeard, isToldWithTheCure) {
  const cPtyPair line;
  const cScriptedPeer peer(line, GetParam().rule);
  const cResult result = runProgram({"info", line.getPath(), "--speed", "19200"});
  EXPECT_EQ(result.status, 3);
  EXPECT_TRUE(holds(result.errors, std::string("at 19200 bits/s: ") + GetParam().heard));
  EXPECT_TRUE(holds(result.errors, GetParam().cure));
  EXPECT_FALSE(holds(result.errors, "115200")) << "another speed was tried";
}

using tText = std::string;

INSTANTIATE_TEST_SUITE_P(
    All, ProgramHeard,
    testing::Values(cHeard{"otherDevice", [](const tText&) { return tText("$GPGGA,1\r\n"); },
                           "text that is no answer, \"$GPGGA,1\"", "Another kind of device"},
                    cHeard{"bridge", [](const tText& heard) { return heard + "\n"; },
                           "what was sent", "data wires touch"},
                    cHeard{"halfAnAnswer", [](const tText& heard) { return heard + "\n00"; },
                           "an answer in part", "plugs"}),
    cCaseName());

TEST(ProgramSearch, showsOnATerminalWhatItTries) {
  const cPtyPair line;
  cProgram program({"info", line.getPath()}, {{"TERM=xterm"}, eSetting::TERMINAL});
  program.waitFor("115200 bits/s, SCIP 2.0: 0 bytes heard, ");
  program.waitFor("115200 bits/s, SCIP 1.x: 0 bytes heard, ");
  program.waitFor(" s of 69 at most");
  program.type("\x03");
  EXPECT_EQ(program.wait(), 0);
  const std::string& text = program.getOutput();
  EXPECT_GT(text.rfind("\x1b[J"), text.rfind("at most")) << "the status line stays";
}

// Would catch a search that listens to such a device up to the library's 64 KiB a record.
TEST(ProgramSearch, endsInTimeOnALineThatIsNeverSilent) {
  const cPtyPair line;
  std::atomic<bool> isOver{false};
  std::thread talker([&] {
    while (!isOver) {
      line.send("$GPGGA,123519,4807.038,N\r\n");
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
  });
  cProgram program({"info", line.getPath(), "--speed", "19200"});
  const auto before = std::chrono::steady_clock::now();
  EXPECT_EQ(program.wait(std::chrono::seconds(120)), 3);
  EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(45));
  isOver = true;
  talker.join();
  EXPECT_TRUE(holds(program.getErrors(), "Another kind of device"));
}

TEST(ProgramSearch, endsAtOnceByASignalOrWhereNobodyReads) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, 0}) {
    const cPtyPair line;
    cProgram program({"scan", line.getPath()});
    program.waitForError("looking for a sensor");
    const auto before = std::chrono::steady_clock::now();
    if (signal == 0) program.closeOutput();
    program.signal(signal);
    EXPECT_EQ(program.wait(), 0) << signal;
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(2)) << "of 62";
  }
}
