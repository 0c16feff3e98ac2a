#include <time.h>

#include <cmath>
#include <nlohmann/json.hpp>

#include "tests/support/cCaseName.h"
#include "tests/tools/cProgram.h"
#include "tests/tools/cTempFolder.h"
#include "tests/tools/simSettings.h"

using nlohmann::json;

struct cRange {
  const char* name;
  eSimModel model;
  std::vector<std::string> options;
  int first, last, cluster;
  double perTurn, front;
  int most = INT_MAX;
};

class ProgramRange : public testing::TestWithParam<cRange> {};

// Would catch distances that are another scan's or another step's, and points at wrong angles.
TEST_P(ProgramRange, comesInJsonWithItsTrueDistances) {
  const cRange& range = GetParam();
  const cSimSensor sensor(unpaced(range.model));
  std::vector<std::string> arguments = {"scan", sensor.getPath(), "-n", "5", "--format", "json"};
  arguments.insert(arguments.end(), range.options.begin(), range.options.end());
  const cResult result = runProgram(arguments);
  ASSERT_EQ(result.status, 0) << result.errors;
  const auto lines = linesOf(result.output);
  const auto sent = sensor.getSentScans();
  ASSERT_EQ(lines.size(), 5u);
  const double step = 2 * M_PI / range.perTurn;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const json scan = json::parse(lines[i]);
    EXPECT_EQ(scan["scan"], i + 1);
    EXPECT_NEAR(scan["first_angle"], (range.first - range.front) * step, 1e-9);
    EXPECT_NEAR(scan["angle_step"], range.cluster * step, 1e-9);
    EXPECT_EQ(scan["distances"], json(sensor.getTrueDistances(sent.at(i), range.first, range.last,
                                                              range.cluster, range.most)));
  }
}

using tWords = std::vector<std::string>;
const tWords NONE = {"--cluster", "0", "--first", "100", "--last", "163"};
const tWords SHORT = {"--first", "300", "--last", "342", "--max-distance", "4095"};

INSTANTIATE_TEST_SUITE_P(
    All, ProgramRange,
    testing::Values(
        cRange{"lastOneShort", eSimModel::LONG_RANGE, {"--cluster", "4"}, 0, 1080, 4, 1440, 540},
        // The same as a cluster of one, and no angle step of 0.
        cRange{"clusterOfNone", eSimModel::MIDDLE_RANGE, NONE, 100, 163, 1, 1024, 384},
        // 43 readings, which three characters each could not carry.
        cRange{"twoCharacters", eSimModel::SHORT_RANGE, SHORT, 300, 342, 1, 1024, 384, 4095}),
    cCaseName());

// Would catch rows of another scan, angle or distance, and data that goes to the terminal as well.
TEST(ProgramScan, writesARowAPointIntoAFileAndNothingElsewhere) {
  const cTempFolder folder;
  const std::string file = folder / "scans.csv";
  const cSimSensor sensor(unpaced());
  const cResult result = runProgram({"scan", sensor.getPath(), "-n", "2", "--format", "csv",
                                     "--first", "384", "--last", "386", "-o", file});
  ASSERT_EQ(result.status, 0) << result.errors;
  EXPECT_EQ(result.output, "");
  const auto lines = linesOf(readFile(file));
  ASSERT_EQ(lines.size(), 7u);
  EXPECT_EQ(lines[0], "scan,timestamp,index,angle_rad,distance_mm");
  const auto distances = sensor.getTrueDistances(sensor.getSentScans().at(1), 384, 386, 1);
  const std::string end = ",2,0.012272," + std::to_string(distances[2]);
  EXPECT_EQ(lines[6].rfind("2,", 0), 0u) << lines[6];
  EXPECT_EQ(lines[6].substr(lines[6].size() - end.size()), end);
}

// Would catch the offset of another instant, or its sign lost: a zone west, and of half an hour.
TEST(ProgramScan, stampsInTheTimeOfItsZone) {
  const time_t before = time(nullptr);
  const cResult result =
      runProgram({"scan", "sim:", "--format", "json"}, {PROGRAM_PATH, {"TZ=NST3:30"}});
  const time_t after = time(nullptr);
  ASSERT_EQ(result.status, 0) << result.errors;
  const std::string stamp = json::parse(result.output)["timestamp"];
  tm local{};
  const char* const fraction = strptime(stamp.c_str(), "%Y-%m-%dT%H:%M:%S", &local);
  ASSERT_NE(fraction, nullptr) << stamp;
  EXPECT_EQ(std::string(fraction).substr(7), "-03:30") << stamp;
  const time_t taken = timegm(&local) + 12600;
  EXPECT_GE(taken, before);
  EXPECT_LE(taken, after);
}

// A sensor that goes on with another range would put points at wrong angles.
TEST(ProgramScan, dropsAndCountsAScanOfOtherLength) {
  cSimSensor sensor(unpaced());
  sensor.setFault(eSimFault::WRONG_COUNT, 2, "scan", 2);
  const cResult result = runProgram({"scan", sensor.getPath(), "-n", "3", "--format", "json"});
  ASSERT_EQ(result.status, 0) << result.errors;
  const auto lines = linesOf(result.output);
  ASSERT_EQ(lines.size(), 3u);
  for (const auto& line : lines) EXPECT_EQ(json::parse(line)["distances"].size(), 682u);
  EXPECT_TRUE(holds(result.errors, "2 dropped"));
}
