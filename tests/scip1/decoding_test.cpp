#include <gtest/gtest.h>

#include <cmath>

#include "tests/scip1/cHeldRig.h"

namespace {

const double RADIANS_PER_STEP = 2 * std::acos(-1.0) / 1024;

/// What a driver makes of a latest record that no sensor has said.
template <typename tDecoder>
tScan decode(tDecoder& driver, const cHeldRig& rig, const std::string& body, int start, int end,
             int cluster) {
  rig.link->record.body = body;
  return driver.addScan(start, end, cluster);
}

}  // namespace

// Catches: a wrong value, order, angle or step; a line's end taken for the scan's; a group count
// rounded the wrong way, a cluster of 0 that divides or widens the step; half a value decoded, a
// refused scan that stays in the list or ends the process.
TEST(Scip1Decoding, TwoCharacters) {
  cHeldRig rig;
  cSensorDriverSCIP1& two = *rig.driver;
  const tScan scan = decode(two, rig, "CB0m\noo\n00\n", 383, 386, 1);
  ASSERT_TRUE(scan);
  EXPECT_EQ(distancesOf(scan), (tNumbers{1234, 61, 4095, 0}));
  EXPECT_DOUBLE_EQ(scan->firstAngle, -RADIANS_PER_STEP);
  EXPECT_DOUBLE_EQ(scan->lastAngle, 2 * RADIANS_PER_STEP);
  EXPECT_DOUBLE_EQ(scan->angleStep, RADIANS_PER_STEP);
  EXPECT_NEAR(scan->points[3].angle, 2 * RADIANS_PER_STEP, 1e-12);
  const auto age = boost::posix_time::microsec_clock::local_time() - scan->timeStamp.time;
  EXPECT_LT(std::abs(age.total_seconds()), 60);

  EXPECT_TRUE(decode(two, rig, "000000\n", 0, 8, 4));
  EXPECT_TRUE(decode(two, rig, "0000\n", 0, 7, 4));
  const tScan same = decode(two, rig, "0000\n", 0, 1, 0);
  ASSERT_TRUE(same);
  EXPECT_EQ(same->angleStep, 0);
  EXPECT_EQ(same->points.at(1).angle, same->firstAngle);
  EXPECT_FALSE(decode(two, rig, "0000\n000\n", 0, 3, 1));
  rig.script("G", record("G00000301", "0", "000\n"));
  EXPECT_EQ(two.doScan(0, 3, 1), 0);
  EXPECT_EQ(rig.scip2().getScanNum(), 4);
  EXPECT_EQ(rig.scip2().getScanFirst(), scan);
}

// Catches: another command's answer handed out as a scan, in a build without assertions too.
TEST(Scip1DecodingDeathTest, MismatchEndsTheProcess) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  cHeldRig rig;
  EXPECT_DEATH(decode(*rig.driver, rig, "0000\n", 0, 2, 1),
               "comm error: mixed response\\? \\(ret: 2 expected:3\\)\n.*px != 0");
  EXPECT_DEATH(decode(*rig.driver, rig, "", 0, 0, 1), "ret: 0 expected:1\\)\n.*px != 0");
}

// Catches: a scan of a wrong length accepted, its message wrong or on the other stream; radians
// instead of degrees, a partial last group refused.
TEST(Scip1Decoding, ThreeCharacters) {
  struct cRow {
    std::string body;
    std::string out, err;
  };
  const std::string line(64, '0');
  const cHeldRig rig;
  cSensorDriverSCIP1z three(rig.link);
  for (const cRow& row :
       {cRow{std::string(63, '0') + "\n", "size not match 63 vs 66\n", ""},
        cRow{line + "0\n", "size not match 65 vs 66\n", ""},
        cRow{line + "\n000\n", "size not match 3 vs 2\n", ""},
        cRow{line + "\n00\n0\n", "size not match 1 vs 0\n", ""},
        cRow{line + "\n", "", "comm error: mixed response? (ret: 21 expected:22)\n"},
        cRow{"", "", "comm error: mixed response? (ret: 0 expected:22)\n"}}) {
    const cOutput output = outputOf([&] { EXPECT_FALSE(decode(three, rig, row.body, 0, 21, 1)); });
    EXPECT_EQ(output.out, row.out);
    EXPECT_EQ(output.err, row.err);
  }
  const tScan scan = decode(three, rig, "1Dh1Dh\n", 384, 388, 3);
  ASSERT_TRUE(scan);
  EXPECT_EQ(distancesOf(scan), (tNumbers{5432, 5432}));
  EXPECT_EQ(scan->firstAngle, 0);
  EXPECT_EQ(scan->lastAngle, 4 * 0.3515625);
  EXPECT_EQ(scan->points[1].angle, 3 * 0.3515625);
  EXPECT_EQ(three.getSCIP2IF()->getScanNum(), 1);
  EXPECT_EQ(three.getSCIP2IF()->getScanFirst(), scan);
}

// Catches: data that are not what the sensor sees, in either form and with any group size; a value
// lost or torn where it runs over a line's end.
TEST(Scip1Decoding, ScansAreWhatTheSensorSees) {
  for (const bool wide : {false, true}) {
    cSimSetting setting;
    setting.dialect = eSimDialect::SCIP1;
    setting.threeCharScip1 = wide;
    setting.paced = false;
    const cSimSensor sensor(setting);
    cSensorDriverSCIP1z driver(tLink(new cTarvoLink(openPort(sensor.getPath(), 10000))));
    std::size_t sent = 0;
    for (const int cluster : {0, 1, 5, 25}) {  // 725 steps: whole groups
      char command[16];
      std::snprintf(command, sizeof command, "G000724%02d", cluster);
      ASSERT_EQ(driver.doRaw(command), 0);
      EXPECT_EQ(distancesOf(wide ? driver.addScan(0, 724, cluster)
                                 : driver.cSensorDriverSCIP1::addScan(0, 724, cluster)),
                truth(sensor, sent++, 0, 724, cluster, wide ? INT_MAX : 4095));
    }
  }
}
