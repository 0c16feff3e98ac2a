// Single commands of a SCIP 1.x driver, and what it makes of a scan's bytes.

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

// Catches: a host whose line follows a speed that the sensor accepted, or not one it refused; an
// answer discarded, as one that came before its command, though no exchange failed.
TEST(Scip1Commands, HostSpeedFollowsARefusalOnly) {
  using tRow = std::tuple<const char*, int, int, speed_t>;
  const cPtyPair cable;
  cSensorDriverSCIP1 driver(openLink(cable.getPath()));
  for (const auto& [answer, baud, result, speed] :
       {tRow{"S0576001234567\n2\n\n", 57600, 2, B57600},
        tRow{"S0192001234567\n0\n\n", 19200, 0, B57600}, tRow{"", 19200, -1, B19200}}) {
    cable.send(answer);
    EXPECT_EQ(driver.doSpeed(baud), result);
    const termios attributes = cable.getAttributes();
    EXPECT_EQ(cfgetospeed(&attributes), speed);
  }
}

// Catches: a late answer, 0.8 s long on a slow line, that is taken for the next command's, and so
// on for ever: a scan that is restarted would begin with the one from before.
TEST(Scip1Recovery, LateScanCostsNoOtherExchange) {
  cSimSetting setting = turning(200, eSimDialect::SCIP1);
  setting.speed = 19200;
  cSimSensor sensor(setting);
  sensor.setFault(eSimFault::LATE, 150, "G", 1);
  const tPort port = openPort(sensor.getPath(), 50);
  port->getSetting()->baudRate = setting.speed;
  port->termSetup(port->getSetting());
  cSensorDriverSCIP1 driver(tLink(new cTarvoLink(port)));
  iSCIP2IF& scip2 = *driver.getSCIP2IF();
  scip2.startScan(0, 724, 1, 0, 0, 0);
  EXPECT_TRUE(scip2.waitScan(LONG));
  EXPECT_FALSE(scip2.isScanning());
  port->readTimeout = 10000;
  EXPECT_EQ(scip2.startScan(0, 724, 1, 0, 1, 0), 1);
  for (const std::size_t sent : {1u, 2u})
    EXPECT_EQ(distancesOf(takeScan(scip2)), truth(sensor, sent, 0, 724, 1, 4095));
  EXPECT_EQ(driver.doVersion() + driver.doScan(0, 1, 1) + driver.doLaser(true), 0);
  EXPECT_EQ(driver.doVersion() + driver.doScan(0, 1, 1), 0);
  EXPECT_EQ(port->readTimeout, 10000);
}

// Catches: an exchange that failed otherwise, or lacks its end, and leaves bytes for the next one.
TEST_F(Scip1, FailedExchangeLeavesNothing) {
  std::uint64_t records = 0;
  for (const char* answer : {"Y\n0\n\n", "X\n10\n\n", "X\n0\nno end\n"}) {
    rig.script("X", answer);
    rig.port->readTimeout = 50;
    rig.driver->doRaw("X");
    rig.port->readTimeout = 10000;
    rig.sensor.inject("the rest\n0\n\n");
    ASSERT_TRUE(rig.sensor.waitFor(&cSimCounters::records, records + 2, LONG_TIME));
    EXPECT_EQ(rig.driver->doRaw("L0"), 0) << answer;
    records += 3;
  }
}

// Catches: an exchange that waits for a line that never falls silent; an end that does.
TEST(Scip1Recovery, BabbleHoldsNobodyForLong) {
  cHeldRig rig(115200);
  std::string minutes;
  while (minutes.size() < 1000000) minutes += "babble\n\n\n";
  rig.sensor.inject(minutes);
  EXPECT_EQ(rig.driver->doRaw("V"), -1);
  EXPECT_LT(measure([&] { EXPECT_EQ(rig.driver->doRaw("V"), -1); }), 10000);
  rig.port->interruptReads(true);
  EXPECT_LT(measure([&] { EXPECT_EQ(rig.driver->doRaw("V"), -1); }), 2000);
}

/// What a driver makes of a latest record that no sensor has sent.
template <typename tDecoder>
static tScan decode(tDecoder& driver, const cHeldRig& rig, const std::string& body, int start,
                    int end, int cluster) {
  rig.link->record.body = body;
  return driver.addScan(start, end, cluster);
}

// Catches: half a value decoded, a refused scan that stays in the list or ends the process.
TEST_F(Scip1, OddLineIsNoScan) {
  EXPECT_FALSE(decode(*rig.driver, rig, "0000\n000\n", 0, 3, 1));
  rig.script("G", record("G00000301", "0", "000\n"));
  EXPECT_EQ(rig.driver->doScan(0, 3, 1), 0);
  EXPECT_EQ(scip2.getScanNum(), 0);
}

// Catches: another command's answer handed out as a scan, in a build without assertions too.
TEST_F(Scip1, MismatchEndsTheProcess) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  EXPECT_DEATH(decode(*rig.driver, rig, "0000\n", 0, 2, 1),
               "comm error: mixed response\\? \\(ret: 2 expected:3\\)\n.*px != 0");
}

// Catches: a scan of a wrong length accepted, its message wrong or on the other stream.
TEST(Scip1Decoding, ThreeCharactersOfAWrongLength) {
  const std::string line(64, '0');
  const cHeldRig rig;
  cSensorDriverSCIP1z three(rig.link);
  using tRow = std::pair<std::string, std::string>;  // a body, and what is printed on out|err
  for (const tRow& row :
       {tRow{std::string(63, '0') + "\n", "size not match 63 vs 66\n|"},
        tRow{line + "\n000\n", "size not match 3 vs 2\n|"},
        tRow{line + "\n00\n0\n", "size not match 1 vs 0\n|"},
        tRow{line + "\n", "|comm error: mixed response? (ret: 21 expected:22)\n"}}) {
    const cOutput output = outputOf([&] { EXPECT_FALSE(decode(three, rig, row.first, 0, 21, 1)); });
    EXPECT_EQ(output.out + "|" + output.err, row.second);
  }
}

// Catches: data that are not what the sensor sees, in either form and with any group size; a value
// lost or torn where it runs over a line's end; a partial last group lost; a cluster of 0 that
// divides or widens the step; angles in the other form's unit; another time.
TEST(Scip1Decoding, ScansAreWhatTheSensorSees) {
  for (const bool wide : {false, true}) {
    const double step = (wide ? 360 : 2 * std::acos(-1.0)) / 1024;
    cSimSetting setting;
    setting.dialect = eSimDialect::SCIP1;
    setting.threeCharScip1 = wide;
    setting.paced = false;
    const cSimSensor sensor(setting);
    cSensorDriverSCIP1z driver(tLink(new cTarvoLink(openPort(sensor.getPath(), 10000))));
    std::size_t sent = 0;
    for (const int cluster : {0, 1, 5, 7}) {  // 725 steps: whole groups, but for 7
      ASSERT_EQ(driver.doRaw("G0007240" + std::to_string(cluster)), 0);
      const tScan scan = wide ? driver.addScan(0, 724, cluster)
                              : driver.cSensorDriverSCIP1::addScan(0, 724, cluster);
      ASSERT_EQ(distancesOf(scan), truth(sensor, sent++, 0, 724, cluster, wide ? INT_MAX : 4095));
      EXPECT_DOUBLE_EQ(scan->firstAngle, -384 * step);
      EXPECT_DOUBLE_EQ(scan->lastAngle, 340 * step);
      EXPECT_NEAR(scan->points[7].angle, (-384 + 7 * cluster) * step, 1e-9);
      const auto age = boost::posix_time::microsec_clock::local_time() - scan->timeStamp.time;
      EXPECT_LT(std::abs(age.total_seconds()), 60);
    }
  }
}
