// Single commands of a SCIP 1.x driver, and what it makes of a scan's bytes.
#include <gtest/gtest.h>

#include <cmath>

#include "tests/scip1/cHeldRig.h"
#include "tests/support/cPtyPair.h"

// Catches: a command that differs by a byte, widths that cut a number, "L0" taken for off.
TEST_F(Scip1, AreExactOnTheWire) {
  iSCIP1IF& scip1 = *rig.driver->getSCIP1IF();
  scip1.doVersion();
  scip1.doLaser(true);
  scip1.doLaser(false);
  scip1.doSpeed(19200);
  scip1.doRaw("any thing");
  rig.script("G", record("G04472501", "1"));
  scip1.doScan(44, 725, 1);
  rig.port->readTimeout = 1;
  scip1.doScan(1234, -5, 100);
  EXPECT_EQ(rig.driver->getLastRawCommand(), "G1234-05100");
  ASSERT_TRUE(rig.hears("G1234", 1));
  EXPECT_EQ(rig.sensor.getCommands(),
            (tLines{"V", "L0", "L1", "S0192001234567", "any thing", "G04472501", "G1234-05100"}));
}

// Catches: values that are trimmed, keys that are missed, a failure that empties what was known;
// other figures than a SCIP 1.x sensor's, on the driver or on the adapter's face.
TEST_F(Scip1, InformationIsTheSensorsOrGiven) {
  const std::string body = "VEND: maker \nPROD:ABC;\nFIRM:1:2\nPROT:first\nPROT:last\nSERI\nVE\n";
  rig.script("V", record("V", "0", body));
  EXPECT_EQ(rig.driver->doVersion(), 0);
  EXPECT_EQ(rig.driver->getResponseBody(), body);
  rig.script("V", record("V", "3", "VEND:other\n"));
  EXPECT_EQ(rig.driver->doVersion(), 3);
  for (const iInfo* info :
       {static_cast<const iInfo*>(rig.driver.get()), dynamic_cast<const iInfo*>(&scip2)}) {
    EXPECT_EQ((tLines{info->getVend(), info->getProd(), info->getFirm(), info->getProt(),
                      info->getSerial(), info->getStatus(), info->getLastRawCommand()}),
              (tLines{" maker ", "ABC;", "1:2", "last", "SERI", "Sensor works well.", "V"}));
    EXPECT_EQ((tNumbers{info->getMinSpot(), info->getMaxSpot(), info->getFrontSpot(),
                        info->getMinDist(), info->getMaxDist(), info->getErr()}),
              (tNumbers{44, 724, 384, 20, 4095, 0x403}));
    EXPECT_FALSE(info->isActivated());
  }
}

// Catches: a host whose line follows a speed that the sensor accepted, or not one it refused.
TEST(Scip1Commands, HostSpeedFollowsARefusalOnly) {
  using tRow = std::tuple<const char*, int, int, speed_t>;
  const cPtyPair cable;
  cSensorDriverSCIP1 driver(openLink(cable.getPath()));
  for (const auto& [answer, baud, result, speed] :
       {tRow{"S0576001234567\n0\n\n", 57600, 0, B115200},
        tRow{"S0576001234567\n2\n\n", 57600, 2, B57600}, tRow{"", 19200, -1, B19200}}) {
    cable.send(answer);
    EXPECT_EQ(driver.doSpeed(baud), result);
    const termios attributes = cable.getAttributes();
    EXPECT_EQ(cfgetospeed(&attributes), speed);
  }
}

namespace {

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
TEST_F(Scip1, TwoCharacters) {
  const double step = 2 * std::acos(-1.0) / 1024;
  cSensorDriverSCIP1& two = *rig.driver;
  const tScan scan = decode(two, rig, "CB0m\noo\n00\n", 383, 386, 1);
  ASSERT_TRUE(scan);
  EXPECT_EQ(distancesOf(scan), (tNumbers{1234, 61, 4095, 0}));
  EXPECT_DOUBLE_EQ(scan->firstAngle, -step);
  EXPECT_DOUBLE_EQ(scan->lastAngle, 2 * step);
  EXPECT_DOUBLE_EQ(scan->angleStep, step);
  EXPECT_NEAR(scan->points[3].angle, 2 * step, 1e-12);
  const auto age = boost::posix_time::microsec_clock::local_time() - scan->timeStamp.time;
  EXPECT_LT(std::abs(age.total_seconds()), 60);
  EXPECT_TRUE(decode(two, rig, "000000\n", 0, 8, 4));
  EXPECT_TRUE(decode(two, rig, "0000\n", 0, 7, 4));
  EXPECT_EQ(decode(two, rig, "0000\n", 0, 1, 0)->angleStep, 0);
  EXPECT_FALSE(decode(two, rig, "0000\n000\n", 0, 3, 1));
  rig.script("G", record("G00000301", "0", "000\n"));
  EXPECT_EQ(two.doScan(0, 3, 1), 0);
  EXPECT_EQ(scip2.getScanNum(), 4);
}

// Catches: another command's answer handed out as a scan, in a build without assertions too.
TEST_F(Scip1, MismatchEndsTheProcess) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  EXPECT_DEATH(decode(*rig.driver, rig, "0000\n", 0, 2, 1),
               "comm error: mixed response\\? \\(ret: 2 expected:3\\)\n.*px != 0");
}

// Catches: a scan of a wrong length accepted, its message wrong or on the other stream; radians
// instead of degrees, a partial last group refused.
TEST(Scip1Decoding, ThreeCharacters) {
  const std::string line(64, '0');
  const cHeldRig rig;
  cSensorDriverSCIP1z three(rig.link);
  using tRow = std::pair<std::string, std::string>;  // a body and the message about its lines
  for (const tRow& row :
       std::vector<tRow>{{std::string(63, '0') + "\n", "size not match 63 vs 66\n"},
                         {line + "\n000\n", "size not match 3 vs 2\n"},
                         {line + "\n00\n0\n", "size not match 1 vs 0\n"},
                         {line + "\n", ""}}) {
    const cOutput output = outputOf([&] { EXPECT_FALSE(decode(three, rig, row.first, 0, 21, 1)); });
    EXPECT_EQ(output.out, row.second);
    EXPECT_EQ(output.err,
              row.second.empty() ? "comm error: mixed response? (ret: 21 expected:22)\n" : "");
  }
  const tScan scan = decode(three, rig, "1Dh1Dh\n", 384, 388, 3);
  ASSERT_TRUE(scan);
  EXPECT_EQ(distancesOf(scan), (tNumbers{5432, 5432}));
  EXPECT_EQ(scan->firstAngle, 0);
  EXPECT_EQ(scan->lastAngle, 4 * 0.3515625);
  EXPECT_EQ(scan->points[1].angle, 3 * 0.3515625);
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
      ASSERT_EQ(driver.doRaw(cluster < 10 ? "G0007240" + std::to_string(cluster) : "G00072425"), 0);
      EXPECT_EQ(distancesOf(wide ? driver.addScan(0, 724, cluster)
                                 : driver.cSensorDriverSCIP1::addScan(0, 724, cluster)),
                truth(sensor, sent++, 0, 724, cluster, wide ? INT_MAX : 4095));
    }
  }
}
