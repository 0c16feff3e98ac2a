#include <csignal>
#include <nlohmann/json.hpp>

#include "sim/tarvosim.h"
#include "tests/tools/cProgram.h"
#include "tests/tools/cTempFolder.h"

namespace fs = std::filesystem;
using nlohmann::json;

// Would catch a path that waits in a buffer while others wait for it.
TEST(ProgramSim, keepsALinkThatOtherProgramsUse) {
  const cTempFolder folder;
  const std::string link = folder / "sensor";
  fs::create_symlink("/dev/pts/left-by-a-crash", link);
  cProgram sim({"sim", "--model", "middle", "--link", link});
  const std::string path = sim.readLine();
  EXPECT_EQ(fs::read_symlink(link), path);
  const cResult info = runProgram({"info", link, "--json"});
  ASSERT_EQ(info.status, 0) << info.errors;
  EXPECT_EQ(json::parse(info.output)["last_step"], 768);
  sim.signal(SIGTERM);
  EXPECT_EQ(sim.wait(), 0) << sim.getErrors();
  EXPECT_FALSE(fs::exists(fs::symlink_status(link)));
}

TEST(ProgramSim, leavesAFileInThePlaceOfTheLinkAlone) {
  const cTempFolder folder;
  const std::string file = folder / "precious";
  std::ofstream(file) << "data";
  EXPECT_EQ(runProgram({"sim", "--link", file}).status, 1);
  EXPECT_EQ(readFile(file), "data");
}

TEST(ProgramSim, makesItsScansBySeed) {
  const auto distances = [](const char* seed) {
    cProgram sim({"sim", "--seed", seed, "--rate", "50"});
    const cResult result = runProgram({"scan", sim.readLine(), "--format", "json"});
    EXPECT_EQ(result.status, 0) << result.errors;
    return json::parse(result.output)["distances"];
  };
  EXPECT_NE(distances("7"), distances("8"));
}

TEST(ProgramSim, hasTheFaultsItIsGivenAndPrintsWhatItHears) {
  cProgram sim(
      {"sim", "--fault", "wrong-count=2", "--fault", "split=3", "--only", "scan", "--verbose"});
  const cResult scan = runProgram({"scan", sim.readLine()});
  EXPECT_EQ(scan.status, 4);
  EXPECT_TRUE(holds(scan.errors, " were dropped so far"));
  sim.waitForError("heard MD0044072501000");
}

TEST(ProgramSim, knowsEveryFaultAndTellsThemInItsHelp) {
  std::vector<std::string> arguments = {"sim", "--fault", "status=0E"};
  const std::string help = runProgram({"sim", "--help"}).output;
  for (const cSimFaultInfo& row : simFaultTable()) {
    arguments.insert(arguments.end(), {"--fault", row.name});
    EXPECT_TRUE(holds(help, std::string("  ") + row.name + "="));
  }
  cProgram sim(arguments);
  EXPECT_NE(sim.readLine(), "");
  sim.signal(SIGINT);
  EXPECT_EQ(sim.wait(), 0) << sim.getErrors();
}
