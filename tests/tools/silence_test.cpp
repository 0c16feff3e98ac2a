// Searches that find nothing: what is said, and how they end.
#include <atomic>
#include <csignal>
#include <thread>

#include "tests/support/cPtyPair.h"
#include "tests/tools/cProgram.h"

// The library says on standard output that it failed: that must not get among the data.
TEST(ProgramSilence, isStatus3AndNoData) {
  const cPtyPair line;
  cProgram program({"info", line.getPath(), "--json"}, {PROGRAM_PATH, {"TERM=xterm"}});
  EXPECT_EQ(program.wait(std::chrono::seconds(200)), 3);
  EXPECT_EQ(program.getOutput(), "");
  const std::string& errors = program.getErrors();
  EXPECT_TRUE(holds(errors, "no sensor answers on " + line.getPath()));
  for (const std::string speed : {"115200", "500000", "19200", "57600"}) {
    EXPECT_TRUE(holds(errors, "at " + speed + " bits/s: nothing\n"));
  }
  EXPECT_FALSE(holds(errors, "\x1b")) << "a status line in a pipe";
}

// Would catch a search that listens to such a device up to the library's 64 KiB a record.
TEST(ProgramSearch, endsInTimeOnALineThatIsNeverSilent) {
  for (const auto& [sent, reported] :
       {std::pair("$GPGGA,123519,4807.038,N\r\n", "text that is no answer, \"$GPGGA"),
        std::pair("\n", "line ends alone (")}) {
    const cPtyPair line;
    std::atomic<bool> isOver{false};
    std::thread talker([&, text = std::string(sent)] {
      while (!isOver) {
        line.send(text);
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
      }
    });
    cProgram program({"info", line.getPath(), "--speed", "19200"});
    const auto before = std::chrono::steady_clock::now();
    EXPECT_EQ(program.wait(std::chrono::seconds(120)), 3);
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(45));
    isOver = true;
    talker.join();
    EXPECT_TRUE(holds(program.getErrors(), std::string("at 19200 bits/s: ") + reported));
  }
}

// Would catch a robot's shutdown that waits for the minute of a search.
TEST(ProgramSearch, endsAtOnceByASignalOrWhereNobodyReads) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, 0}) {
    const cPtyPair line;
    cProgram program({"scan", line.getPath()});
    program.waitForError("looking for a sensor");
    const auto before = std::chrono::steady_clock::now();
    if (signal == 0) program.closeOutput();
    program.signal(signal);
    EXPECT_EQ(program.wait(), signal == 0 ? -SIGPIPE : -signal);
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(2)) << "of 62";
  }
}
