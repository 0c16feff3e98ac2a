#include <nlohmann/json.hpp>

#include "tests/tools/cProgram.h"
#include "tests/tools/cTempFolder.h"

namespace fs = std::filesystem;

// Would catch a path that waits in a buffer while others wait for it, a link that leads nowhere,
// one that stays behind, and somebody's data lost for a misspelt one.
TEST(ProgramSim, keepsALinkThatOtherProgramsUseButReplacesNoFile) {
  const cTempFolder folder;
  const std::string link = folder / "sensor";
  fs::create_symlink("/dev/pts/left-by-a-crash", link);
  cProgram sim({"sim", "--model", "middle", "--link", link});
  const std::string path = sim.readLine();
  EXPECT_EQ(fs::read_symlink(link), path);
  const cResult info = runProgram({"info", link, "--json"});
  ASSERT_EQ(info.status, 0) << info.errors;
  EXPECT_EQ(nlohmann::json::parse(info.output)["last_step"], 768);
  sim.signal(SIGTERM);
  EXPECT_EQ(sim.wait(), 0) << sim.getErrors();
  EXPECT_FALSE(fs::exists(fs::symlink_status(link)));
  std::ofstream(link) << "data";
  EXPECT_EQ(runProgram({"sim", "--link", link}).status, 1);
  EXPECT_EQ(readFile(link), "data");
}

// Would catch options that change nothing, by which a host would seem to bear every fault.
TEST(ProgramSim, hasTheFaultsItIsGivenAndPrintsWhatItHears) {
  cProgram sim(
      {"sim", "--fault", "wrong-count=2", "--fault", "split=3", "--only", "scan", "--verbose"});
  const cResult scan = runProgram({"scan", sim.readLine()});
  EXPECT_EQ(scan.status, 4);
  EXPECT_TRUE(holds(scan.errors, "0 scans, "));
  sim.waitForError("heard MD0044072501000");
}
