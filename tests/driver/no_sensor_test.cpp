#include <gtest/gtest.h>

#include "tests/support/driving.h"

// Would catch: detections too many or too few, a probe left over, messages that moved.
TEST(Detection, SaysSoWhenNoSensorAnswers) {
  cSimSensor mute{cSimSetting()};
  mute.setFault(eSimFault::STALL);
  const int threads = countThreads();
  tDriver driver;

  const cOutput output = outputOf([&] { driver = cSensorDriverManager::create(mute.getPath()); });

  EXPECT_FALSE(driver);
  EXPECT_EQ(output.out, "Failed all 19200/57600/115200/500000bps. (even tried 3times for each)\n[" +
                            mute.getPath() + "]\n");
  EXPECT_EQ(output.err, "cSensorDriver::Could not activate driver\n");
  std::vector<std::string> asked;
  for (int i = 0; i < 13; ++i) asked.insert(asked.end(), {"VV;1", "TM2;2", "V"});
  EXPECT_EQ(mute.getCommands(), asked);
  EXPECT_EQ(countOpen(mute.getPath()), 1) << "but the sensor's own";
  EXPECT_TRUE(eventually([&] { return countThreads() == threads; }));
}
