#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "sim/tarvosim.h"
#include "tests/tools/cProgram.h"
#include "tests/tools/cTempFolder.h"

namespace fs = std::filesystem;

TEST(ProgramSimTest, KeepsALinkThatOtherProgramsUse) {
  const cTempFolder folder;
  const std::string link = folder / "sensor";
  fs::create_symlink("/dev/pts/left-by-a-crash", link);
  cProgram sim({"sim", "--model", "middle", "--link", link});
  const std::string path = sim.readLine();  // fails when the line is kept in a buffer
  EXPECT_EQ(fs::read_symlink(link), path);

  const cResult info = runProgram({"info", link, "--json"});
  ASSERT_EQ(info.status, 0) << info.errors;
  EXPECT_EQ(nlohmann::json::parse(info.output)["last_step"], 768);

  sim.signal(SIGTERM);
  EXPECT_EQ(sim.wait(), 0) << sim.getErrors();
  EXPECT_FALSE(fs::exists(fs::symlink_status(link)));
}

TEST(ProgramSimTest, LeavesAFileInThePlaceOfTheLinkAlone) {
  const cTempFolder folder;
  const std::string file = folder / "precious";
  std::ofstream(file) << "data";
  EXPECT_EQ(runProgram({"sim", "--link", file}).status, 1);
  EXPECT_EQ(readFile(file), "data");
}

TEST(ProgramSimTest, SeedMakesTheScans) {
  const auto distances = [](const char* seed) {
    cProgram sim({"sim", "--seed", seed, "--rate", "50"});
    const cResult result = runProgram({"scan", sim.readLine(), "--format", "json"});
    EXPECT_EQ(result.status, 0) << result.errors;
    sim.signal(SIGINT);
    EXPECT_EQ(sim.wait(), 0);
    return nlohmann::json::parse(result.output)["distances"];
  };
  EXPECT_NE(distances("7"), distances("8"));
}

TEST(ProgramSimTest, HasTheFaultsItIsGivenAndPrintsWhatItHears) {
  cProgram sim(
      {"sim", "--fault", "wrong-count=2", "--fault", "split=3", "--only", "scan", "--verbose"});
  const cResult scan = runProgram({"scan", sim.readLine()});
  EXPECT_EQ(scan.status, 4);
  EXPECT_NE(scan.errors.find(" were dropped so far"), std::string::npos) << scan.errors;
  sim.waitForError("heard MD0044072501000");
  sim.signal(SIGTERM);
  EXPECT_EQ(sim.wait(), 0) << sim.getErrors();
}

TEST(ProgramSimTest, KnowsEveryFaultAndTellsThemInItsHelp) {
  std::vector<std::string> arguments = {"sim", "--fault", "status=0E"};
  const std::string help = runProgram({"sim", "--help"}).output;
  for (const cSimFaultInfo& row : simFaultTable()) {
    arguments.insert(arguments.end(), {"--fault", row.name});
    EXPECT_NE(help.find(std::string("  ") + row.name + "="), std::string::npos) << row.name;
  }
  cProgram sim(arguments);
  EXPECT_NE(sim.readLine(), "");
  sim.signal(SIGTERM);
  EXPECT_EQ(sim.wait(), 0) << sim.getErrors();
}
