#include <gtest/gtest.h>
#include <time.h>

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

#include "sim/tarvosim.h"
#include "tests/support/cCaseName.h"
#include "tests/tools/cProgram.h"
#include "tests/tools/cPtyProgram.h"
#include "tests/tools/cTempFolder.h"

namespace {

/// A sensor as fast as its reader, so that the tests are short.
cSimSetting quickSetting(eSimModel model = eSimModel::SHORT_RANGE) {
  cSimSetting setting;
  setting.model = model;
  setting.paced = false;
  return setting;
}

}  // namespace

struct cRangeCase {
  const char* name;
  eSimModel model;
  std::vector<std::string> options;
  int first, last, cluster, most;
  double perTurn, front;
};

void PrintTo(const cRangeCase& range, std::ostream* out) { *out << range.name; }

class ProgramRangeTest : public testing::TestWithParam<cRangeCase> {};

TEST_P(ProgramRangeTest, JsonHasTheTrueDistances) {
  const cRangeCase& range = GetParam();
  const cSimSensor sensor(quickSetting(range.model));
  std::vector<std::string> arguments = {"scan", sensor.getPath(), "-n", "5", "--format", "json"};
  arguments.insert(arguments.end(), range.options.begin(), range.options.end());
  const cResult result = runProgram(arguments);
  ASSERT_EQ(result.status, 0) << result.errors;
  const auto lines = linesOf(result.output);
  const auto sent = sensor.getSentScans();
  ASSERT_EQ(lines.size(), 5u);
  const double step = 2 * M_PI / range.perTurn;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const auto scan = nlohmann::json::parse(lines[i]);
    EXPECT_EQ(scan["scan"], i + 1);
    EXPECT_NEAR(scan["first_angle"], (range.first - range.front) * step, 1e-9);
    EXPECT_NEAR(scan["angle_step"], range.cluster * step, 1e-9);
    EXPECT_EQ(
        scan["distances"].get<std::vector<int>>(),
        sensor.getTrueDistances(sent.at(i), range.first, range.last, range.cluster, range.most));
  }
}

INSTANTIATE_TEST_SUITE_P(
    All, ProgramRangeTest,
    testing::Values(cRangeCase{"Whole", eSimModel::SHORT_RANGE, {}, 44, 725, 1, INT_MAX, 1024, 384},
                    cRangeCase{"PartialLastCluster",
                               eSimModel::LONG_RANGE,
                               {"--cluster", "4"},
                               0,
                               1080,
                               4,
                               INT_MAX,
                               1440,
                               540},
                    cRangeCase{"ClusterOfNone",  // the same as of one, and no angle step of 0
                               eSimModel::MIDDLE_RANGE,
                               {"--cluster", "0", "--first", "100", "--last", "163"},
                               100,
                               163,
                               1,
                               INT_MAX,
                               1024,
                               384},
                    cRangeCase{
                        "TwoCharacters",  // 43 readings, which three characters could not carry
                        eSimModel::SHORT_RANGE,
                        {"--first", "300", "--last", "342", "--max-distance", "4095"},
                        300,
                        342,
                        1,
                        4095,
                        1024,
                        384}),
    cCaseName());

TEST(ProgramScanTest, CsvHasARowAPoint) {
  const cSimSensor sensor(quickSetting());
  const cResult result = runProgram(
      {"scan", sensor.getPath(), "-n", "2", "--format", "csv", "--first", "384", "--last", "386"});
  ASSERT_EQ(result.status, 0) << result.errors;
  const auto lines = linesOf(result.output);
  ASSERT_EQ(lines.size(), 7u);
  EXPECT_EQ(lines[0], "scan,timestamp,index,angle_rad,distance_mm");
  const auto distances = sensor.getTrueDistances(sensor.getSentScans().at(1), 384, 386, 1);
  const std::string end = ",2,0.012272," + std::to_string(distances[2]);
  EXPECT_EQ(lines[6].rfind("2,", 0), 0u) << lines[6];
  EXPECT_EQ(lines[6].substr(lines[6].size() - end.size()), end);
}

TEST(ProgramScanTest, TableHasALineAScanWithItsValidDistances) {
  cSimSetting setting;
  setting.rate = 50;
  const cSimSensor sensor(setting);
  const cResult result = runProgram({"scan", sensor.getPath(), "-n", "20"});
  ASSERT_EQ(result.status, 0) << result.errors;
  const auto lines = linesOf(result.output);
  ASSERT_EQ(lines.size(), 21u);
  auto distances = sensor.getTrueDistances(sensor.getSentScans().at(19), 44, 725, 1);
  const auto isError = [](int distance) { return distance < 20; };
  distances.erase(std::remove_if(distances.begin(), distances.end(), isError), distances.end());
  std::istringstream row(lines[20]);
  std::string number, time;
  int points = 0, nearest = 0, farthest = 0;
  double rate = 0;
  row >> number >> time >> points >> nearest >> farthest >> rate;
  EXPECT_EQ(number, "20");
  EXPECT_EQ(points, 682);
  EXPECT_EQ(nearest, *std::min_element(distances.begin(), distances.end()));
  EXPECT_EQ(farthest, *std::max_element(distances.begin(), distances.end()));
  EXPECT_GT(rate, 0);
  EXPECT_NE(result.errors.find("20 scans, "), std::string::npos) << result.errors;
}

class ProgramZoneTest : public testing::TestWithParam<const char*> {};

TEST_P(ProgramZoneTest, TimeStampsCarryTheOffsetOfTheInstant) {
  // Fails with the offset of another instant or its sign lost (a zone west, not whole hours).
  cStart start;
  start.environment = {GetParam()};
  const time_t before = time(nullptr);
  const cResult result = runProgram({"scan", "sim:", "--format", "json"}, start);
  const time_t after = time(nullptr);
  ASSERT_EQ(result.status, 0) << result.errors;
  const std::string stamp = nlohmann::json::parse(result.output)["timestamp"];
  ASSERT_EQ(stamp.size(), std::string("2026-01-01T00:00:00.000000+00:00").size()) << stamp;
  tm parts{};
  ASSERT_NE(strptime(stamp.c_str(), "%Y-%m-%dT%H:%M:%S", &parts), nullptr) << stamp;
  const int sign = stamp[26] == '-' ? -1 : 1;
  const int offset = sign * (std::stoi(stamp.substr(27, 2)) * 60 + std::stoi(stamp.substr(30, 2)));
  const time_t taken = timegm(&parts) - offset * 60;
  EXPECT_GE(taken, before);
  EXPECT_LE(taken, after);
}

INSTANTIATE_TEST_SUITE_P(Zones, ProgramZoneTest,
                         testing::Values("TZ=UTC0", "TZ=XXX-5:30", "TZ=YYY3:30"));

TEST(ProgramScanTest, FileTakesTheDataAndStandardOutputNone) {
  const cTempFolder folder;
  const std::string file = folder / "scans.csv";
  const cResult result = runProgram({"scan", "sim:", "--format", "csv", "-o", file});
  ASSERT_EQ(result.status, 0) << result.errors;
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(linesOf(readFile(file)).size(), 683u);
}

TEST(ProgramScanTest, FailedRunLeavesTheOlderFileAndKeepsWhatItTook) {
  const cTempFolder folder;
  const std::string file = folder / "scans.json";
  std::ofstream(file) << "older";
  cSimSetting setting;
  setting.rate = 50;
  cSimSensor sensor(setting);
  cProgram program({"scan", sensor.getPath(), "-n", "0", "--format", "json", "-o", file});
  ASSERT_TRUE(sensor.waitForSentScans(5, std::chrono::seconds(60)));
  sensor.unplug();
  EXPECT_EQ(program.wait(), 4);
  EXPECT_EQ(readFile(file), "older");
  EXPECT_NE(program.getErrors().find("are in " + file + ".part-"), std::string::npos)
      << program.getErrors();
  // Without a scan nothing is worth keeping.
  EXPECT_EQ(runProgram({"scan", "--last", "9999", "-o", file + "2"}).status, 1);
  const std::filesystem::directory_iterator left(folder / "");
  EXPECT_EQ(std::distance(begin(left), end(left)), 2);
}

TEST(ProgramScanTest, ShowsOnATerminalHowFarItIs) {
  const cTempFolder folder;
  const cSimSensor sensor{cSimSetting{}};
  cPtyProgram program({"scan", sensor.getPath(), "-n", "0", "-o", folder / "scans"},
                      {PROGRAM_PATH, false, {"TERM=xterm"}});
  program.waitFor(" a second, 0 dropped");
  program.waitFor(" a second, 0 dropped");
  program.type("\x03");
  EXPECT_EQ(program.wait(), 0) << program.getText();
}

TEST(ProgramScanTest, DropsAndCountsAScanOfOtherLength) {
  // A sensor that goes on with another range would put points at wrong angles.
  cSimSensor sensor(quickSetting());
  sensor.setFault(eSimFault::WRONG_COUNT, 2, "scan", 2);
  const cResult result = runProgram({"scan", sensor.getPath(), "-n", "3", "--format", "json"});
  ASSERT_EQ(result.status, 0) << result.errors;
  const auto lines = linesOf(result.output);
  ASSERT_EQ(lines.size(), 3u);
  for (const auto& line : lines) {
    EXPECT_EQ(nlohmann::json::parse(line)["distances"].size(), 682u);
  }
  EXPECT_NE(result.errors.find("2 dropped"), std::string::npos) << result.errors;
}

TEST(ProgramScanTest, TakesOverWhatAnEarlierProgramLeftRunning) {
  // Stale records of the other scan (another range, another tag) must not come as ours.
  cSimSetting setting = quickSetting();
  setting.paced = true;
  setting.rate = 50;
  const cSimSensor sensor(setting);
  cProgram first({"scan", sensor.getPath(), "-n", "0", "--cluster", "2"});
  for (int i = 0; i < 5; ++i) first.readLine();
  first.signal(SIGKILL);
  EXPECT_EQ(first.wait(), -SIGKILL);
  ASSERT_TRUE(sensor.isScanning());
  const auto heard = static_cast<std::ptrdiff_t>(sensor.getCommands().size());

  const cResult second = runProgram({"scan", sensor.getPath(), "-n", "5", "--format", "json"});
  ASSERT_EQ(second.status, 0) << second.errors;
  EXPECT_EQ(linesOf(second.output).size(), 5u);
  EXPECT_NE(second.errors.find(" 0 dropped"), std::string::npos) << second.errors;
  EXPECT_FALSE(sensor.isScanning());
  const auto commands = sensor.getCommands();
  const auto firstOf = [&](const std::string& command) {
    return std::find_if(commands.begin() + heard, commands.end(),
                        [&](const std::string& line) { return line.rfind(command, 0) == 0; });
  };
  EXPECT_LT(firstOf("QT"), firstOf("MD"));
}
