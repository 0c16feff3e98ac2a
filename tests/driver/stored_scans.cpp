#include <gtest/gtest.h>

#include "tests/driver/cScriptedSensor.h"
#include "tests/driver/support.h"

namespace {

class cStoredScan : public testing::Test {
 protected:
  cSimSensor sensor{cSimSetting()};
  tDriver2 driver = openReady(sensor.getPath());
};

TEST_F(cStoredScan, IsTakenWhileTheLaserIsOn) {
  EXPECT_EQ(driver->getStoredScan(44, 725, 1, 5600), -1) << "laser off";
  ASSERT_EQ(driver->startStoringScan(), 0);
  struct cStored {
    int longest, cluster, most;
  };
  std::size_t taken = 0;
  for (const cStored& stored : {cStored{5600, 1, INT_MAX}, {4095, 1, 4095}, {4096, 3, INT_MAX}}) {
    ASSERT_EQ(driver->getStoredScan(44, 725, stored.cluster, stored.longest), 0);
    EXPECT_EQ(distancesOf(driver->getScanFirst()),
              truth(sensor, taken++, 44, 725, stored.cluster, stored.most));
  }
  EXPECT_EQ(driver->getSCIP1IF()->doScan(44, 725, 1), 0);
  EXPECT_EQ(driver->getStoredScan(100, 142, 1, 5600), -1) << "ends in a line of one character";
  EXPECT_EQ(driver->getScanNum(), 1);
}

TEST_F(cStoredScan, TellsItsAnglesAndSendsItsLine) {
  const std::string printed = outputOf([&] {
                                driver->getStoredScan(0, 768, 0, 4095);
                                driver->doScan(44, 725, 2);
                                driver->getStoredScan(384, 385, 1, 4096);
                              }).err;
  EXPECT_EQ(printed,
            "Scan points parameter step:0.00613592 skip:0 start:-2.35619 end:2.35619\n"
            "Scan points parameter step:0.00613592 skip:0.0122718 start:-2.08621 end:2.09235\n"
            "Scan points parameter step:0.00613592 skip:0.00613592 start:0 end:0.00613592\n");
  const std::vector<std::string> sent = {"PP;1", "GS0000076800;2", "GS0044072502;3",
                                         "GD0384038501;4"};
  EXPECT_EQ(sensor.getCommands(), sent);
}

// Would catch: a stored scan given to the running one's listener, or the other way round.
TEST_F(cStoredScan, ComesBesideARunningScan) {
  ASSERT_EQ(driver->startScan(44, 143, 1, 0, 0, 5600), 0);
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

}  // namespace
