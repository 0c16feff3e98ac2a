#include <time.h>

#include <cmath>
#include <nlohmann/json.hpp>
#include <set>

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
    EXPECT_EQ(
        scan["distances"].get<std::vector<int>>(),
        sensor.getTrueDistances(sent.at(i), range.first, range.last, range.cluster, range.most));
  }
}

using tWords = std::vector<std::string>;
const tWords NONE = {"--cluster", "0", "--first", "100", "--last", "163"};
const tWords SHORT = {"--first", "300", "--last", "342", "--max-distance", "4095"};

INSTANTIATE_TEST_SUITE_P(
    All, ProgramRange,
    testing::Values(
        cRange{"whole", eSimModel::SHORT_RANGE, {}, 44, 725, 1, 1024, 384},
        cRange{"lastOneShort", eSimModel::LONG_RANGE, {"--cluster", "4"}, 0, 1080, 4, 1440, 540},
        // The same as a cluster of one, and no angle step of 0.
        cRange{"clusterOfNone", eSimModel::MIDDLE_RANGE, NONE, 100, 163, 1, 1024, 384},
        // 43 readings, which three characters each could not carry.
        cRange{"twoCharacters", eSimModel::SHORT_RANGE, SHORT, 300, 342, 1, 1024, 384, 4095}),
    cCaseName());

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

TEST(ProgramScan, tellsInATableTheNearestAndFarthestValidDistance) {
  const cSimSensor sensor(fastTurning());
  const cResult result = runProgram({"scan", sensor.getPath(), "-n", "20"});
  ASSERT_EQ(result.status, 0) << result.errors;
  const auto lines = linesOf(result.output);
  ASSERT_EQ(lines.size(), 21u);
  std::set<int> distances;
  for (const int one : sensor.getTrueDistances(sensor.getSentScans().at(19), 44, 725, 1)) {
    if (one >= 20) distances.insert(one);  // below are error values
  }
  std::istringstream row(lines[20]);
  std::string time;
  int number = 0, points = 0, shortest = 0, longest = 0;
  double rate = 0;
  row >> number >> time >> points >> shortest >> longest >> rate;
  EXPECT_EQ(number, 20);
  EXPECT_EQ(points, 682);
  EXPECT_EQ(shortest, *distances.begin());
  EXPECT_EQ(longest, *distances.rbegin());
  EXPECT_GT(rate, 0);
  EXPECT_TRUE(holds(result.errors, "20 scans, "));
}

class ProgramZone : public testing::TestWithParam<const char*> {};

// Would catch the offset of another instant, or its sign lost: zones west, and not of whole hours.
TEST_P(ProgramZone, isTheTimeStamps) {
  const time_t before = time(nullptr);
  const cResult result = runProgram({"scan", "sim:", "--format", "json"}, {{GetParam()}});
  const time_t after = time(nullptr);
  ASSERT_EQ(result.status, 0) << result.errors;
  const std::string stamp = json::parse(result.output)["timestamp"];
  ASSERT_EQ(stamp.size(), std::string("2026-01-01T00:00:00.000000+00:00").size()) << stamp;
  tm local{};
  tm zone{};
  ASSERT_NE(strptime(stamp.c_str(), "%Y-%m-%dT%H:%M:%S", &local), nullptr) << stamp;
  ASSERT_NE(strptime(stamp.c_str() + 26, "%z", &zone), nullptr) << stamp;
  const time_t taken = timegm(&local) - zone.tm_gmtoff;
  EXPECT_GE(taken, before);
  EXPECT_LE(taken, after);
}

INSTANTIATE_TEST_SUITE_P(All, ProgramZone, testing::Values("TZ=UTC0", "TZ=IST-5:30", "TZ=NST3:30"));

TEST(ProgramScan, showsOnATerminalHowFarItIs) {
  const cTempFolder folder;
  const cSimSensor sensor{cSimSetting{}};
  cProgram program({"scan", sensor.getPath(), "-n", "0", "-o", folder / "scans"},
                   {{"TERM=xterm"}, eSetting::TERMINAL});
  program.waitFor(" a second, 0 dropped");
  program.waitFor(" a second, 0 dropped");
  program.type("\x03");
  EXPECT_EQ(program.wait(), 0) << program.getOutput();
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

// Would catch stale records of the other scan (another range, another tag) taken for ours.
TEST(ProgramScan, takesOverWhatAnEarlierProgramLeftRunning) {
  cSimSetting setting = fastTurning();
  setting.scanningAtStart = true;
  const cSimSensor sensor(setting);
  const cResult result = runProgram({"scan", sensor.getPath(), "-n", "5", "--cluster", "2"});
  ASSERT_EQ(result.status, 0) << result.errors;
  EXPECT_EQ(linesOf(result.output).size(), 6u);
  EXPECT_TRUE(holds(result.errors, " 0 dropped"));
  EXPECT_FALSE(sensor.isScanning());
  std::string commands;
  for (const std::string& command : sensor.getCommands()) commands += command + "\n";
  EXPECT_LT(commands.find("\nQT"), commands.find("\nMD"));
}
