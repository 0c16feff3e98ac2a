#include <gtest/gtest.h>

#include <chrono>
#include <csignal>

#include "tests/support/cPtyPair.h"
#include "tests/tools/cProgram.h"

TEST(ProgramSilenceTest, NoSensorIsStatus3AndNoData) {
  // The library says on standard output that it failed: that must not get among the data.
  const cPtyPair line;
  cProgram program({"info", line.getPath(), "--json"});
  EXPECT_EQ(program.wait(std::chrono::seconds(200)), 3);
  EXPECT_EQ(program.getOutput(), "");
  EXPECT_NE(program.getErrors().find("no sensor answers on " + line.getPath()), std::string::npos)
      << program.getErrors();
}

TEST(ProgramSilenceTest, SignalEndsTheSearchAtOnce) {
  const cPtyPair line;
  cProgram program({"scan", line.getPath()});
  program.waitForError("looking for a sensor");
  const auto before = std::chrono::steady_clock::now();
  program.signal(SIGTERM);
  EXPECT_EQ(program.wait(), 0);
  EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(1));
}
