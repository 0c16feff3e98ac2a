#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "sim/tarvosim.h"
#include "tests/support/cCaseName.h"
#include "tests/tools/cProgram.h"
#include "tests/tools/cTempFolder.h"

namespace fs = std::filesystem;

namespace {

cSimSetting quickSetting() {
  cSimSetting setting;
  setting.paced = false;
  return setting;
}

struct cPlace {
  double x, y;
};

std::vector<cPlace> readingsIn(const std::string& drawing) {
  std::vector<cPlace> places;
  for (const std::string& line : linesOf(drawing)) {
    cPlace place{};
    constexpr auto READING = " <circle class=\"reading\" cx=\"%lf\" cy=\"%lf\"";
    if (sscanf(line.c_str(), READING, &place.x, &place.y) == 2) places.push_back(place);
  }
  return places;
}

}  // namespace

TEST(ProgramPlotTest, DrawsEachValidReadingOfTheLastScan) {
  const cTempFolder folder;
  const std::string file = folder / "plot.svg";
  const cSimSensor sensor(quickSetting());
  const cResult result = runProgram({"scan", sensor.getPath(), "-n", "3", "--plot", file});
  ASSERT_EQ(result.status, 0) << result.errors;
  EXPECT_EQ(linesOf(result.output).size(), 4u) << "the table is still wanted";
  const auto distances = sensor.getTrueDistances(sensor.getSentScans().at(2), 44, 725, 1);
  const auto isValid = [](int distance) { return distance >= 20; };
  const auto valid = std::count_if(distances.begin(), distances.end(), isValid);
  const std::string drawing = readFile(file);
  EXPECT_EQ(readingsIn(drawing).size(), static_cast<std::size_t>(valid));
  for (const char* text : {"Simulated short range scanner", " of 682 readings valid", "2 m", "90°",
                           "Distances in metres"}) {
    EXPECT_NE(drawing.find(text), std::string::npos) << text;
  }
}

struct cDirection {
  const char* name;
  const char* step;
  int right, up;  // -1, 0 or 1
};

void PrintTo(const cDirection& direction, std::ostream* out) { *out << direction.name; }

class ProgramPlotDirectionTest : public testing::TestWithParam<cDirection> {};

TEST_P(ProgramPlotDirectionTest, IsAsTheSensorLooks) {
  // Fails when the drawing is mirrored or turned. The middle of the rings is at 500/580.
  const cTempFolder folder;
  const std::string file = folder / "plot.svg";
  const cSimSensor sensor(quickSetting());
  const char* step = GetParam().step;
  const cResult result = runProgram(
      {"scan", sensor.getPath(), "--first", step, "--last", step, "-n", "1", "--plot", file});
  ASSERT_EQ(result.status, 0) << result.errors;
  const auto places = readingsIn(readFile(file));
  ASSERT_EQ(places.size(), 1u);
  const auto sign = [](double offset) { return offset > 1 ? 1 : offset < -1 ? -1 : 0; };
  EXPECT_EQ(sign(places[0].x - 500), GetParam().right);
  EXPECT_EQ(sign(580 - places[0].y), GetParam().up);
}

INSTANTIATE_TEST_SUITE_P(All, ProgramPlotDirectionTest,
                         testing::Values(cDirection{"LeftAhead", "450", -1, 1},
                                         cDirection{"LeftBehind", "700", -1, -1},
                                         cDirection{"Right", "128", 1, 0}),
                         cCaseName());

TEST(ProgramPlotTest, FailedRunLeavesTheOlderFileAndNothingElse) {
  const cTempFolder folder;
  const std::string file = folder / "plot.svg";
  std::ofstream(file) << "older";
  cSimSensor sensor(quickSetting());
  sensor.setFault(eSimFault::WRONG_COUNT, 2, "scan");
  EXPECT_EQ(runProgram({"scan", sensor.getPath(), "--plot", file}).status, 4);
  EXPECT_EQ(readFile(file), "older");
  EXPECT_EQ(std::distance(fs::directory_iterator(folder / ""), fs::directory_iterator()), 1);
}

TEST(ProgramPlotTest, ReplacesWhatALinkLeadsToAndKeepsItsPermissions) {
  const cTempFolder folder;
  const std::string file = folder / "plot.svg";
  const std::string link = folder / "link.svg";
  std::ofstream(file) << "older";
  fs::permissions(file, fs::perms::owner_read | fs::perms::owner_write);
  fs::create_symlink("plot.svg", link);
  const cSimSensor sensor(quickSetting());
  ASSERT_EQ(runProgram({"scan", sensor.getPath(), "--plot", link}).status, 0);
  EXPECT_TRUE(fs::is_symlink(link));
  EXPECT_EQ(readFile(file).rfind("<?xml", 0), 0u);
  EXPECT_EQ(fs::status(file).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST(ProgramPlotTest, RefusesAtOnceWhatIsNoFile) {
  // Renaming over a device would take it away from everybody.
  const cTempFolder folder;
  const std::string pipe = folder / "pipe";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  for (const std::string& path : {pipe, folder / "", folder / "no/plot.svg"}) {
    const cResult result = runProgram({"scan", "sim:", "--plot", path});
    EXPECT_EQ(result.status, 1) << path;
    EXPECT_EQ(result.errors.find("looking for a sensor"), std::string::npos) << path;
    EXPECT_NE(result.errors.find("cannot write to " + path), std::string::npos) << result.errors;
  }
  EXPECT_TRUE(fs::is_fifo(pipe));
}
