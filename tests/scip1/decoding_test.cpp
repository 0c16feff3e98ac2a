#include <gtest/gtest.h>

#include <cmath>

#include "tests/scip1/cHeldSensor.h"

namespace {

const double RADIANS_PER_STEP = 2 * std::acos(-1.0) / 1024;

/// A driver whose latest record a test writes itself; no sensor answers.
template <typename Driver>
struct cDecoder {
  tScan decode(const std::string& body, int start, int end, int cluster) {
    rig.link->record.body = body;
    return driver.addScan(start, end, cluster);
  }
  int countScans() { return rig.scip2().getScanNum(); }

  cRig rig;
  Driver& driver = replace(rig);

 private:
  static Driver& replace(cRig& rig) {
    rig.driver.reset(new Driver(rig.link));
    return static_cast<Driver&>(*rig.driver);
  }
};

using cTwoCharacters = cDecoder<cSensorDriverSCIP1>;
using cThreeCharacters = cDecoder<cSensorDriverSCIP1z>;

}  // namespace

// Catches: a wrong value, order, angle or step; a line's end taken for the scan's.
TEST(Scip1Decoding, TwoCharacters) {
  cTwoCharacters two;
  const tScan scan = two.decode("CB0m\noo\n00\n", 383, 386, 1);
  ASSERT_TRUE(scan);
  EXPECT_EQ(distancesOf(scan), (std::vector<int>{1234, 61, 4095, 0}));
  EXPECT_DOUBLE_EQ(scan->firstAngle, -RADIANS_PER_STEP);
  EXPECT_DOUBLE_EQ(scan->lastAngle, 2 * RADIANS_PER_STEP);
  EXPECT_DOUBLE_EQ(scan->angleStep, RADIANS_PER_STEP);
  EXPECT_NEAR(scan->points[3].angle, 2 * RADIANS_PER_STEP, 1e-12);
  const auto age = boost::posix_time::microsec_clock::local_time() - scan->timeStamp.time;
  EXPECT_LT(std::abs(age.total_seconds()), 60);
  EXPECT_EQ(two.rig.scip2().getScanFirst(), scan);
}

// Catches: a group count rounded the wrong way, a cluster of 0 that divides or widens the step;
// half a value decoded, a refused scan that stays in the list or ends the process.
TEST(Scip1Decoding, TwoCharactersInGroupsAndOddLines) {
  cTwoCharacters two;
  EXPECT_TRUE(two.decode("000000\n", 0, 8, 4));
  EXPECT_TRUE(two.decode("0000\n", 0, 7, 4));
  const tScan scan = two.decode("0000\n", 0, 1, 0);
  ASSERT_TRUE(scan);
  EXPECT_EQ(scan->angleStep, 0);
  EXPECT_EQ(scan->points.at(1).angle, scan->firstAngle);
  EXPECT_EQ(two.countScans(), 3);
  EXPECT_FALSE(two.decode("0000\n000\n", 0, 3, 1));
  two.rig.sensor.script("G", record("G00000301", "0", "000\n"));
  EXPECT_EQ(two.driver.doScan(0, 3, 1), 0);
  EXPECT_EQ(two.countScans(), 3);
}

// Catches: another command's answer handed out as a scan, in a build without assertions too.
TEST(Scip1DecodingDeathTest, MismatchEndsTheProcess) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  EXPECT_DEATH(cTwoCharacters().decode("0000\n", 0, 2, 1),
               "comm error: mixed response\\? \\(ret: 2 expected:3\\)\n.*px != 0");
  EXPECT_DEATH(cTwoCharacters().decode("", 0, 0, 1), "ret: 0 expected:1\\)\n.*px != 0");
}

// Catches: a value lost or torn where it runs over a line's end, radians instead of degrees.
TEST(Scip1Decoding, ThreeCharactersRunOverLineEnds) {
  cThreeCharacters three;
  std::string body;
  for (int i = 0; i < 43; ++i) body += "1Dh";  // 129 characters: two whole lines and one of 1
  body[63] = 'm', body[64] = '2';
  const tScan scan = three.decode(body.insert(128, "\n").insert(64, "\n") + "\n", 384, 426, 1);
  ASSERT_TRUE(scan);
  std::vector<int> expected(43, 5432);
  expected[21] = ('m' - 0x30) * 4096 + 2 * 64 + ('h' - 0x30);
  EXPECT_EQ(distancesOf(scan), expected);
  EXPECT_EQ(scan->firstAngle, 0);
  EXPECT_EQ(scan->lastAngle, 42 * 0.3515625);
  EXPECT_EQ(scan->points[2].angle, 0.703125);
  EXPECT_EQ(three.rig.scip2().getScanFirst(), scan);
  EXPECT_TRUE(three.decode("1Dh1Dh\n", 0, 4, 3)) << "the last group is partial";
  EXPECT_TRUE(three.decode("1Dh1Dh\n", 0, 1, 0));
}

// Catches: a scan of a wrong length accepted, its message wrong or on the other stream.
TEST(Scip1Decoding, ThreeCharactersOfAWrongLengthAreRefused) {
  struct cRow {
    std::string body;
    std::string out, err;
  };
  const std::string line(64, '0');
  cThreeCharacters three;
  for (const cRow& row :
       {cRow{std::string(63, '0') + "\n", "size not match 63 vs 66\n", ""},
        cRow{line + "0\n", "size not match 65 vs 66\n", ""},
        cRow{line + "\n000\n", "size not match 3 vs 2\n", ""},
        cRow{line + "\n00\n0\n", "size not match 1 vs 0\n", ""},
        cRow{line + "\n", "", "comm error: mixed response? (ret: 21 expected:22)\n"},
        cRow{"", "", "comm error: mixed response? (ret: 0 expected:22)\n"}}) {
    const cOutput output = outputOf([&] { EXPECT_FALSE(three.decode(row.body, 0, 21, 1)); });
    EXPECT_EQ(output.out, row.out);
    EXPECT_EQ(output.err, row.err);
  }
  EXPECT_EQ(three.countScans(), 0);
}

// Catches: data that are not what the sensor sees, in either form and with any group size.
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
