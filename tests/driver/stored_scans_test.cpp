#include <gtest/gtest.h>

#include "tests/support/driving.h"

// Would catch: the other form asked for, angles that are not the range's, a refusal that makes a
// scan, a last line of one character taken.
TEST(StoredScan, IsTakenWhileTheLaserIsOn) {
  const cSimSensor sensor{cSimSetting()};
  const tDriver2 driver = openReady(sensor.getPath());
  EXPECT_EQ(driver->getStoredScan(44, 725, 1, 5600), -1) << "laser off";
  ASSERT_EQ(driver->startStoringScan(), 0);
  const std::string printed = outputOf([&] {
                                EXPECT_EQ(driver->getStoredScan(44, 725, 0, 4095), 0);
                                EXPECT_EQ(driver->doScan(44, 725, 2), 0);
                                EXPECT_EQ(driver->getStoredScan(384, 385, 1, 4096), 0);
                                EXPECT_EQ(driver->getStoredScan(100, 142, 1, 5600), -1);
                              }).err;
  const std::string step = "Scan points parameter step:0.00613592 skip:";
  EXPECT_EQ(printed, step + "0 start:-2.08621 end:2.09235\n" +  //
                         step + "0.0122718 start:-2.08621 end:2.09235\n" + step +
                         "0.00613592 start:0 end:0.00613592\n" + step +
                         "0.00613592 start:-1.7426 end:-1.48489\n");
  EXPECT_EQ(sensor.getCommands(),
            (std::vector<std::string>{"PP;1", "GD0044072501;2", "BM;3", "GS0044072500;4",
                                      "GS0044072502;5", "GD0384038501;6", "GD0100014201;7"}));
  EXPECT_EQ(distancesOf(driver->getScanFirst()), truth(sensor, 0, 44, 725, 0, 4095));
  EXPECT_EQ(distancesOf(driver->getScanFirst()), truth(sensor, 1, 44, 725, 2, 4095));
  EXPECT_EQ(distancesOf(driver->getScanFirst()), truth(sensor, 2, 384, 385));
  EXPECT_FALSE(driver->getScanFirst());
}

// Would catch: a stored scan given to the running one's listener, or the other way round.
TEST(StoredScan, ComesBesideARunningScan) {
  const cSimSensor sensor(quick());
  const tDriver2 driver = openReady(sensor.getPath());
  startSurely(sensor, *driver, 44, 143, 1, 0, 5600);
  ASSERT_TRUE(driver->waitScan(LONG));
  ASSERT_EQ(driver->getStoredScan(44, 93, 1, 5600), 0);
  EXPECT_EQ(driver->abortScan(), 0);
  int small = 0;
  for (tScan scan = driver->getScanFirst(); scan; scan = driver->getScanFirst()) {
    if (scan->points.size() == 50) ++small;
    EXPECT_TRUE(scan->points.size() == 50 || scan->points.size() == 100);
  }
  EXPECT_EQ(small, 1);
}
