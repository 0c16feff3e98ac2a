#include <gtest/gtest.h>

#include "tests/driver/cScriptedSensor.h"
#include "tests/driver/support.h"

namespace {

using tOperation = int (*)(cSensorDriverSCIP2& driver);

struct cControl {
  const char* name;
  tOperation operate;
  std::string line;
};

std::ostream& operator<<(std::ostream& out, const cControl& of) { return out << of.name; }

const cControl CONTROLS[] = {
    {"LaserOn", [](cSensorDriverSCIP2& driver) { return driver.doLaser(true); }, "BM;1"},
    {"LaserOff", [](cSensorDriverSCIP2& driver) { return driver.doLaser(false); }, "BM;1"},
    {"StartStoring", [](cSensorDriverSCIP2& driver) { return driver.startStoringScan(); }, "BM;1"},
    {"StopAll", [](cSensorDriverSCIP2& driver) { return driver.stopAll(); }, "QT;1"},
    {"Reset", [](cSensorDriverSCIP2& driver) { return driver.resetURG(); }, "SS;1"},
    {"Version", [](cSensorDriverSCIP2& driver) { return driver.doVersion(); }, "VV;1"},
};

class cControlCommand : public testing::TestWithParam<cControl> {};

TEST_P(cControlCommand, SendsItsLineAndTellsTheAnswer) {
  for (const std::string status : {"00", "01", "0E"}) {
    cScriptedSensor sensor([&](const std::string& line) { return record(line, status); });
    const tDriver2 driver = openDriver(sensor.getPath());
    EXPECT_EQ(GetParam().operate(*driver), status == "00" ? 0 : -1);
    EXPECT_EQ(sensor.getCommands(), std::vector<std::string>{GetParam().line});
  }
}

INSTANTIATE_TEST_SUITE_P(Controls, cControlCommand, testing::ValuesIn(CONTROLS));

TEST(cFixedAnswers, SendNothing) {
  cSimSensor sensor{cSimSetting()};
  const tDriver2 driver = openDriver(sensor.getPath());
  const cOutput output = outputOf([&] {
    EXPECT_EQ(driver->getErr(), 0);
    EXPECT_EQ(driver->doSpeed(19200), -1);
    EXPECT_EQ(driver->setCommSpeed(19200), -1);
    EXPECT_EQ(driver->doRaw("VV"), -1);
    EXPECT_EQ(driver->resumeScan(), -1);
    EXPECT_EQ(driver->scansToGo(), -1);
    EXPECT_EQ(driver->abortScan(), -1);
    EXPECT_FALSE(driver->getScanFirst(0));
    driver->purgeScan();
    EXPECT_FALSE(driver->isScanning());
  });
  EXPECT_EQ(output.err, "SCIP2::doSpeed not implemented yet\n");
  EXPECT_EQ(output.out, "");
  ASSERT_EQ(driver->stopAll(), 0);  // what was sent before it, the sensor has heard
  EXPECT_EQ(sensor.getCommands(), std::vector<std::string>{"QT;1"});
}

TEST(cFaces, AreTheDriverItself) {
  cSimSensor sensor{cSimSetting()};
  const tDriver2 driver = openDriver(sensor.getPath());
  EXPECT_EQ(driver->getSCIP2IF()->fetchVersionStr(), 0);
  EXPECT_EQ(driver->getSCIP1IF()->doVersion(), 0);
  EXPECT_EQ(static_cast<iInfo&>(*driver).getVend(), "Simulated sensors");
  EXPECT_EQ(driver->getSCIP1IF()->getResponseBody().substr(0, 5), "VEND:");
  EXPECT_EQ(&driver->getSCIP1IF()->getErr(), &driver->getErr());
  EXPECT_EQ(driver->getLastRawCommand(), "") << "SCIP 2.0 requests are none";
}

}  // namespace
