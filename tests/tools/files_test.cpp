// The files that a run writes: -o and --plot.
#include <sys/stat.h>

#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "tests/support/cPtyPair.h"
#include "tests/tools/cProgram.h"
#include "tests/tools/cTempFolder.h"

namespace fs = std::filesystem;
using nlohmann::json;

namespace {

std::ptrdiff_t countIn(const cTempFolder& folder) {
  return std::distance(fs::directory_iterator(folder / ""), fs::directory_iterator());
}

}  // namespace

// Would catch a drawing that is mirrored, turned or out of scale, or shows another scan.
TEST(ProgramPlot, hasEachValidReadingOfTheLastScanInItsPlace) {
  const cTempFolder folder;
  const std::string plot = folder / "plot.svg";
  const cResult result =
      runProgram({"scan", "sim:", "-n", "3", "--json", "-o", "-", "--plot", plot});
  ASSERT_EQ(result.status, 0) << result.errors;
  EXPECT_EQ(runProgram({"--noout", plot}, {"/usr/bin/xmllint"}).errors, "");

  const std::vector<int> distances = json::parse(linesOf(result.output).at(2))["distances"];
  std::size_t step = 44;
  double scale = 0;
  for (const std::string& line : linesOf(readFile(plot))) {
    double x = 0, y = 0;
    constexpr auto READING = " <circle class=\"reading\" cx=\"%lf\" cy=\"%lf\"";
    if (sscanf(line.c_str(), READING, &x, &y) != 2) continue;
    while (distances.at(step - 44) < 20) ++step;  // an error value
    const int distance = distances[step - 44];
    if (scale == 0) scale = std::hypot(x - 500, 580 - y) / distance;
    const double angle = (static_cast<double>(step++) - 384) * 2 * M_PI / 1024;
    EXPECT_NEAR(x, 500 - std::sin(angle) * distance * scale, 1) << step;
    EXPECT_NEAR(y, 580 - std::cos(angle) * distance * scale, 1) << step;
  }
  EXPECT_GT(scale, 0) << "nothing is drawn";
  for (; step <= 725; ++step) EXPECT_LT(distances[step - 44], 20) << step << " is not drawn";
}

// Would catch a file of the name "-", and a drawing with rows in it.
TEST(ProgramFiles, areStandardOutputByAHyphen) {
  const cTempFolder folder;
  const auto isDrawing = [](const std::string& text) { return text.rfind("<?xml", 0) == 0; };
  EXPECT_TRUE(isDrawing(runProgram({"scan", "sim:", "--plot", "-"}).output));
  EXPECT_TRUE(isDrawing(runProgram({"scan", "sim:", "--plot", "-", "-o", folder / "rows"}).output));
  EXPECT_EQ(linesOf(readFile(folder / "rows")).size(), 2u);
}

// Would catch good data of an earlier run lost for a run that failed or was cut short, and its own
// thrown away.
TEST(ProgramFiles, leaveTheOlderOnesWhereARunFailsAndKeepWhatItTook) {
  for (const auto& [count, status] : {std::pair("0", 4), std::pair("5000", -SIGINT)}) {
    const cTempFolder folder;
    const std::string data = folder / "scans", plot = folder / "plot";
    std::ofstream(data) << "older";
    std::ofstream(plot) << "older";
    cSimSensor sensor(turning());
    cProgram program({"scan", sensor.getPath(), "-n", count, "-o", data, "--plot", plot});
    ASSERT_TRUE(sensor.waitForSentScans(5, std::chrono::seconds(60)));
    status < 0 ? program.signal(-status) : sensor.unplug();
    EXPECT_EQ(program.wait(), status);
    EXPECT_EQ(readFile(data) + readFile(plot), "olderolder");
    EXPECT_TRUE(holds(program.getErrors(), "are in " + data + ".part-"));
    EXPECT_EQ(countIn(folder), 3);
  }
}

class ProgramFile : public testing::TestWithParam<const char*> {};

// Would catch a link that is replaced itself, and a file that others may read from then on or that
// is root's.
TEST_P(ProgramFile, replacesWhatALinkLeadsToAndKeepsItsOwnerAndPermissions) {
  const cTempFolder folder;
  const std::string file = folder / "file", link = folder / "link";
  fs::create_symlink("file", link);
  // First what the link leads to is not there, then it is.
  ASSERT_EQ(runProgram({"scan", "sim:", GetParam(), link}).status, 0);
  std::ofstream(file) << "older";
  const uid_t owner = geteuid() == 0 ? 65534 : geteuid();
  ASSERT_EQ(chown(file.c_str(), owner, static_cast<gid_t>(-1)), 0);
  fs::permissions(file, fs::perms::owner_read | fs::perms::owner_write);
  ASSERT_EQ(runProgram({"scan", "sim:", GetParam(), link}).status, 0);
  struct stat status {};
  EXPECT_EQ(stat(file.c_str(), &status), 0);
  EXPECT_GT(status.st_size, 50);
  EXPECT_TRUE(status.st_mode == (S_IFREG | 0600) && status.st_uid == owner);
  EXPECT_TRUE(fs::is_symlink(link));
  EXPECT_EQ(countIn(folder), 2);
}

// Renaming asks the folder alone: would catch a file replaced that its owner protects, a device
// that is taken away from everybody, and scans written to another sensor.
TEST_P(ProgramFile, isRefusedAtOnceWhereItCannotBeReplaced) {
  const cTempFolder folder;
  const std::string file = folder / "precious", pipe = folder / "pipe";
  std::ofstream(file) << "older";
  fs::permissions(file, fs::perms::owner_read | fs::perms::others_read);
  fs::permissions(folder / "", fs::perms::all);
  ASSERT_EQ(mkfifo(pipe.c_str(), 0644), 0);
  const cPtyPair other;
  fs::permissions(other.getPath(), fs::perms::all);
  std::vector<std::string> paths{file, folder / "", folder / "none/file", other.getPath()};
  if (GetParam() == std::string("--plot")) paths.push_back(pipe);
  for (const std::string& path : paths) {
    const std::vector<std::string> arguments{"scan", "sim:", GetParam(), path};
    const cResult result = geteuid() == 0 ? runAsNobody(arguments) : runProgram(arguments);
    EXPECT_TRUE(result.status == 1 && holds(result.errors, "cannot write to " + path));
    EXPECT_FALSE(holds(result.errors, "looking for a sensor"));
  }
  EXPECT_EQ(readFile(file), "older");
  EXPECT_TRUE(fs::is_fifo(pipe));
}

INSTANTIATE_TEST_SUITE_P(All, ProgramFile, testing::Values("-o", "--plot"));
