#include <fmt/format.h>
#include <time.h>

#include <cmath>
#include <nlohmann/json.hpp>

#include "tests/support/settings.h"
#include "tests/tools/cProgram.h"
#include "tests/tools/cTempFolder.h"

using nlohmann::json;

// Would catch distances that are another scan's or another step's, angles of another cluster, scans
// that do not say where they come from, and one of another range: its points are at wrong angles;
// with SCIP 1.x a scan more than asked for, or a run that ends at an answer that does not come.
TEST(ProgramScan, writesInJsonWhatTheSensorSees) {
  for (const auto dialect : {eSimDialect::SCIP2, eSimDialect::SCIP1}) {
    const bool isOld = dialect == eSimDialect::SCIP1;
    cSimSensor sensor(turning(0, dialect));
    if (isOld) sensor.setFault(eSimFault::NO_ANSWER, cSimSensor::DEFAULT_VALUE, "G", 1);
    if (!isOld) sensor.setFault(eSimFault::WRONG_COUNT, 2, "scan", 1);
    const cResult result = runProgram({"scan", sensor.getPath(), "-n", "3", "--json", "--cluster",
                                       "4", "--max-distance", "4095"});
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_TRUE(holds(result.errors, isOld ? "3 scans, 0 damaged" : "3 scans, 1 damaged, 0 lost"));
    const auto lines = linesOf(result.output);
    // The host has a scan a moment before the sensor has noted it as sent.
    ASSERT_TRUE(sensor.waitForSentScans(isOld ? 3 : 4, std::chrono::seconds(60)));
    const auto sent = sensor.getSentScans();
    ASSERT_EQ(lines.size(), 3u);
    for (std::size_t i = 0; i < lines.size(); ++i) {
      const json scan = json::parse(lines[i]);
      EXPECT_EQ(scan["scan"], i + 1);
      EXPECT_EQ(scan["device"], sensor.getPath());
      EXPECT_TRUE(holds(scan["serial"], "S0000001"));
      EXPECT_NEAR(scan["first_angle"], -340 * 2 * M_PI / 1024, 1e-9);
      EXPECT_NEAR(scan["angle_step"], 8 * M_PI / 1024, 1e-9);
      const auto seen =
          sensor.getTrueDistances(sent.at(i + !isOld), 44, isOld ? 724 : 725, 4, 4095);
      EXPECT_EQ(scan["distances"], json(seen));
    }
  }
}

// Would catch rows of another scan, angle or distance, data that goes to the terminal as well, a
// mirrored position or one of a reading that is no distance, and a name that breaks a row.
TEST(ProgramScan, writesARowAPointIntoAFileAndNothingElsewhere) {
  const cTempFolder folder;
  const std::string file = folder / "scans.csv", link = folder / "a,\"b";
  cSimSetting setting = turning();
  setting.link = link;
  const cSimSensor sensor(setting);
  const cResult result = runProgram({"scan", link, "-n", "2", "--first", "360", "--last", "390",
                                     "--format", "csv", "--xy", "--origin", "-o", file});
  ASSERT_EQ(result.status, 0) << result.errors;
  EXPECT_EQ(result.output, "");
  const auto lines = linesOf(readFile(file));
  ASSERT_EQ(lines.size(), 63u);
  EXPECT_EQ(lines[0], "scan,timestamp,index,angle_rad,distance_mm,x_mm,y_mm,device,product,serial");
  const auto distances = sensor.getTrueDistances(sensor.getSentScans().at(1), 360, 390, 1);
  for (std::size_t i = 0; i <= 30; ++i) {
    const int distance = distances[i];
    const double angle = (static_cast<double>(i) - 24) * 2 * M_PI / 1024;
    std::string end = fmt::format(",{},{:.6f},{}", i, angle, distance);
    end += distance < 20
               ? ",,"
               : fmt::format(",{:.1f},{:.1f}", distance * cos(angle), distance * sin(angle));
    end += ",\"" + folder / "a,\"\"b\",Simulated short range scanner,S0000001";
    const std::string& line = lines[32 + i];
    EXPECT_EQ(line.rfind("2,", 0), 0u) << line;
    EXPECT_EQ(line.substr(line.size() - end.size()), end);
  }
}

// Would catch the offset of another instant, or its sign lost: a zone west, and of half an hour.
TEST(ProgramScan, stampsInTheTimeOfItsZone) {
  const cResult result = runProgram({"scan", "sim:", "--json"}, {PROGRAM_PATH, {"TZ=NST3:30"}});
  const std::string stamp = json::parse(result.output)["timestamp"];
  tm local{};
  const char* const fraction = strptime(stamp.c_str(), "%Y-%m-%dT%H:%M:%S", &local);
  ASSERT_NE(fraction, nullptr) << stamp;
  EXPECT_EQ(std::string(fraction).substr(7), "-03:30") << stamp;
  EXPECT_LT(std::abs(timegm(&local) + 12600 - time(nullptr)), 60);
}
