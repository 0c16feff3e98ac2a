#include <gtest/gtest.h>

#include "sim/tarvosim.h"
#include "tarvolink/tarvolink.h"

namespace {

struct cRow {
  const char* name;
  eSimDialect dialect;
  eSimUnknown unknown;  // and blank
  int sensorSpeed;
  int hostSpeed;
};

void PrintTo(const cRow& row, std::ostream* out) { *out << row.name; }

constexpr auto SCIP1 = eSimDialect::SCIP1;
constexpr auto SWITCH = eSimDialect::SCIP1_SWITCH;
constexpr auto STATUS = eSimUnknown::STATUS;
constexpr auto ECHO_ONLY = eSimUnknown::ECHO_ONLY;
constexpr auto SILENT = eSimUnknown::SILENT;

const cRow ROWS[] = {
    {"Scip1Status", SCIP1, STATUS, 115200, 115200},
    {"Scip1Echo", SCIP1, ECHO_ONLY, 115200, 115200},
    {"Scip1Silent", SCIP1, SILENT, 115200, 115200},
    {"Scip1Status57600", SCIP1, STATUS, 57600, 57600},
    {"Scip1SecondSpeed", SCIP1, ECHO_ONLY, 115200, 19200},
    {"SwitchStatus", SWITCH, STATUS, 115200, 115200},
    {"SwitchEcho", SWITCH, ECHO_ONLY, 115200, 115200},
    {"SwitchSilent", SWITCH, SILENT, 115200, 115200},
    {"SwitchSilent57600", SWITCH, SILENT, 57600, 57600},
    {"SwitchSecondSpeed", SWITCH, STATUS, 115200, 19200},
};

cSimSetting settingOf(const cRow& row) {
  cSimSetting setting;
  setting.dialect = row.dialect;
  setting.unknownCommands = row.unknown;
  setting.blankCommands = row.unknown;
  setting.speed = row.sensorSpeed;
  setting.rate = 100;
  return setting;
}

boost::shared_ptr<cSensorDriver> find(const cSimSensor& sensor, int hostSpeed) {
  const boost::shared_ptr<kavTBX::cPortSetting> setting(new kavTBX::cPortSetting);
  setting->baudRate = hostSpeed;
  return cSensorDriverManager::create(boost::shared_ptr<kavTBX::basic_portbuf<char>>(
      new kavTBX::basic_portbuf<char>(sensor.getPath(), setting)));
}

/// Takes three scans of steps 44 to 725 and compares them with what the sensor saw.
void expectTrueScans(iSCIP2IF& scip2, const cSimSensor& sensor) {
  for (std::size_t i = 0; i < 3; ++i) {
    boost::shared_ptr<cScan> scan;
    for (int attempt = 0; attempt < 20 && !scan; ++attempt) {
      scan = scip2.getScanFirst();
      if (!scan) scip2.waitScan(1000);
    }
    ASSERT_TRUE(scan);
    ASSERT_TRUE(sensor.waitForSentScans(i + 1, std::chrono::seconds(20)));
    std::vector<int> distances;
    for (const cScanPoint& point : scan->points) {
      distances.push_back(static_cast<int>(point.distance));
    }
    EXPECT_EQ(distances, sensor.getTrueDistances(sensor.getSentScans()[i], 44, 725, 1, 4095));
  }
}

class Scip1Detection : public testing::TestWithParam<cRow> {};

}  // namespace

// Catches: a SCIP 1.x sensor that is not found, or found as the other kind; answers lost to
// another thread; a found one that gives no scans.
TEST_P(Scip1Detection, SensorIsFoundAndScans) {
  cSimSensor sensor(settingOf(GetParam()));
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  const boost::shared_ptr<cSensorDriver> driver = find(sensor, GetParam().hostSpeed);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  ASSERT_TRUE(driver);
  const bool isScip1 = dynamic_cast<cSensorDriverSCIP1*>(driver.get()) != nullptr;
  EXPECT_EQ(isScip1, GetParam().dialect == SCIP1);
  EXPECT_EQ(driver->isActivated(), !isScip1);
  for (int i = 0; i < 10; ++i) ASSERT_EQ(driver->getSCIP1IF()->doVersion(), 0) << i;
  EXPECT_EQ(driver->getVend(), isScip1 ? "Simulated sensors;" : "Simulated sensors");
  iSCIP2IF& scip2 = *driver->getSCIP2IF();
  ASSERT_GE(scip2.startScan(44, 725, 1, 0, isScip1 ? 2 : 3, 4095), 0);
  expectTrueScans(scip2, sensor);
}

INSTANTIATE_TEST_SUITE_P(Kinds, Scip1Detection, testing::ValuesIn(ROWS),
                         [](const auto& row) { return row.param.name; });
