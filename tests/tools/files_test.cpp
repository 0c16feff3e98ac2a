// The files that a run writes: -o and --plot.
#include <sys/stat.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>

#include "tests/tools/cProgram.h"
#include "tests/tools/cTempFolder.h"
#include "tests/tools/simSettings.h"

namespace fs = std::filesystem;

namespace {

std::ptrdiff_t countIn(const cTempFolder& folder) {
  return std::distance(fs::directory_iterator(folder / ""), fs::directory_iterator());
}

}  // namespace

// Would catch a drawing that is mirrored, turned or out of scale, or shows another scan.
TEST(ProgramPlot, hasEachValidReadingOfTheLastScanInItsPlace) {
  const cTempFolder folder;
  const cSimSensor sensor(unpaced());
  const cResult result =
      runProgram({"scan", sensor.getPath(), "-n", "3", "--plot", folder / "plot.svg"});
  ASSERT_EQ(result.status, 0) << result.errors;
  EXPECT_EQ(linesOf(result.output).size(), 4u) << "the table is still wanted";
  const std::string drawing = readFile(folder / "plot.svg");
  EXPECT_EQ(runProgram({"--noout", folder / "plot.svg"}, {"/usr/bin/xmllint"}).errors, "");

  const auto distances = sensor.getTrueDistances(sensor.getSentScans().at(2), 44, 725, 1);
  std::size_t step = 44;
  double scale = 0;
  for (const std::string& line : linesOf(drawing)) {
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

// Would catch good data of an earlier run lost for a run that failed, and its own thrown away.
TEST(ProgramFiles, leaveTheOlderOnesWhereARunFailsAndKeepWhatItTook) {
  const cTempFolder folder;
  const std::string data = folder / "scans.json";
  const std::string plot = folder / "plot.svg";
  std::ofstream(data) << "older";
  std::ofstream(plot) << "older";
  cSimSensor sensor(fastTurning());
  cProgram program({"scan", sensor.getPath(), "-n", "0", "-o", data, "--plot", plot});
  ASSERT_TRUE(sensor.waitForSentScans(5, std::chrono::seconds(60)));
  sensor.unplug();
  EXPECT_EQ(program.wait(), 4);
  EXPECT_EQ(readFile(data), "older");
  EXPECT_EQ(readFile(plot), "older");
  EXPECT_TRUE(holds(program.getErrors(), "are in " + data + ".part-"));
  EXPECT_EQ(countIn(folder), 3);
}

class ProgramFile : public testing::TestWithParam<const char*> {};

// Would catch a link that is replaced itself, and a file that others may read from then on.
TEST_P(ProgramFile, replacesWhatALinkLeadsToAndKeepsItsPermissions) {
  constexpr auto OWNERS_ALONE = fs::perms::owner_read | fs::perms::owner_write;
  const cTempFolder folder;
  const std::string file = folder / "file";
  const std::string link = folder / "link";
  fs::create_symlink("file", link);
  const cSimSensor sensor(unpaced());
  // First what the link leads to is not there, then it is.
  ASSERT_EQ(runProgram({"scan", sensor.getPath(), GetParam(), link}).status, 0);
  std::ofstream(file) << "older";
  fs::permissions(file, OWNERS_ALONE);
  ASSERT_EQ(runProgram({"scan", sensor.getPath(), GetParam(), link}).status, 0);
  EXPECT_GT(readFile(file).size(), 50u);
  EXPECT_TRUE(fs::is_symlink(link));
  EXPECT_EQ(fs::status(file).permissions(), OWNERS_ALONE);
  EXPECT_EQ(countIn(folder), 2);
}

// Renaming asks the folder alone: would catch a file replaced that its owner protects, and a device
// that is taken away from everybody.
TEST_P(ProgramFile, isRefusedAtOnceWhereItCannotBeReplaced) {
  const cTempFolder folder;
  const std::string file = folder / "precious";
  const std::string pipe = folder / "pipe";
  std::ofstream(file) << "older";
  fs::permissions(file, fs::perms::owner_read | fs::perms::others_read);
  fs::permissions(folder / "", fs::perms::all);
  ASSERT_EQ(mkfifo(pipe.c_str(), 0644), 0);
  std::vector<std::string> paths{file, folder / "", folder / "none/file"};
  if (GetParam() == std::string("--plot")) paths.push_back(pipe);
  for (const std::string& path : paths) {
    const std::vector<std::string> arguments{"scan", "sim:", GetParam(), path};
    const cResult result = geteuid() == 0 ? runAsNobody(arguments) : runProgram(arguments);
    EXPECT_EQ(result.status, 1) << path;
    EXPECT_TRUE(holds(result.errors, "cannot write to " + path));
    EXPECT_FALSE(holds(result.errors, "looking for a sensor"));
  }
  EXPECT_EQ(readFile(file), "older");
  EXPECT_TRUE(fs::is_fifo(pipe));
}

INSTANTIATE_TEST_SUITE_P(All, ProgramFile, testing::Values("-o", "--plot"));
