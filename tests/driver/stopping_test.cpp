// How a driver ends, each state of its thread, the thread's own tests have.
#include <gtest/gtest.h>

#include "tests/support/driving.h"

namespace {

void scanEndlessly(const cSimSensor& sensor, iSCIP2IF& driver) {
  startSurely(sensor, driver, 44, 725, 1, 0, 5600);
  ASSERT_TRUE(driver.waitScan(LONG));
}

}  // namespace

// Would catch: a driver that ends its host, a thread or a descriptor left behind, a device that
// cannot be opened again.
TEST(Driver, OutlivesThePulledCableAndTheNextOneScans) {
  cSimSensor sensor(quick());
  const int threads = countThreads();
  tDriver2 driver = openReady(sensor.getPath());
  scanEndlessly(sensor, *driver);
  sensor.unplug();
  while (driver->waitScan(400)) driver->getScanFirst();
  EXPECT_NE(outputOf([&] { EXPECT_EQ(driver->stopAll(), -1); }).err, "");

  sensor.plug();
  tDriver2 next = openReady(sensor.getPath());
  scanEndlessly(sensor, *next);
  EXPECT_EQ(next->abortScan(), 0);
  scanEndlessly(sensor, *next);
  driver.reset();
  next.reset();
  EXPECT_EQ(countOpen(sensor.getPath()), 1) << "the sensor's own";
  cSensorDriverSCIP2(openLink(sensor.getPath()));  // destroyed though it never ran
  EXPECT_EQ(countOpen(sensor.getPath()), 1);
  EXPECT_TRUE(eventually([&] { return countThreads() <= threads; }));
}

TEST(Driver, TwoSensorsInOneProcessKeepTheirScansApart) {
  const cSimSensor one(quick(eSimModel::SHORT_RANGE));
  const cSimSensor other(quick(eSimModel::LONG_RANGE));
  const tDriver2 first = openReady(one.getPath());
  const tDriver2 second = openReady(other.getPath());
  const std::size_t ofOne = startSurely(one, *first, 44, 725, 1, 50, 5600);
  const std::size_t ofOther = startSurely(other, *second, 0, 1080, 1, 50, 60000);
  for (std::size_t i = 0; i < 50; ++i) {
    ASSERT_EQ(distancesOf(takeScan(*first)), truth(one, ofOne + i, 44, 725));
    ASSERT_EQ(distancesOf(takeScan(*second)), truth(other, ofOther + i, 0, 1080));
  }
}

// Would catch: records of a dead program taken for one's own, a stream that nobody can stop.
TEST(Driver, TakesOverFromAProgramKilledInTheMiddleOfAStream) {
  cSimSetting setting = quick();
  setting.scanningAtStart = true;
  const cSimSensor sensor(setting);
  ASSERT_TRUE(sensor.waitFor(&cSimCounters::skippedScans, 1, LONG_TIME)) << "nobody reads it";
  const tDriver driver = cSensorDriverManager::create(sensor.getPath());
  ASSERT_TRUE(driver);
  EXPECT_EQ(driver->getVend(), "Simulated sensors");
  iSCIP2IF& face = *driver->getSCIP2IF();
  ASSERT_TRUE(stopLeftScan(face));
  EXPECT_FALSE(sensor.isScanning());
  const std::size_t sent = startSurely(sensor, face, 44, 725, 1, 3, 5600);
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(distancesOf(takeScan(face)), truth(sensor, sent + i, 44, 725));
  }
}
