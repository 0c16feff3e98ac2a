#include <fcntl.h>
#include <gtest/gtest.h>
#include <termios.h>
#include <unistd.h>

#include "tests/scip1/cHeldRig.h"

// Catches: a command that differs by a byte, widths that cut a number, "L0" taken for off.
TEST(Scip1Commands, AreExactOnTheWire) {
  cHeldRig rig;
  iSCIP1IF& scip1 = *rig.driver->getSCIP1IF();
  EXPECT_EQ(rig.driver->getErr(), 0);
  scip1.doVersion();
  scip1.doLaser(true);
  scip1.doLaser(false);
  scip1.doSpeed(19200);
  scip1.doRaw("any thing");
  rig.script("G", record("G04472501", "1"));
  scip1.doScan(44, 725, 1);
  scip1.doScan(0, 0, 99);
  rig.letGo(0);
  rig.port->readTimeout = 1;
  scip1.doScan(1234, -5, 100);
  ASSERT_TRUE(rig.hears("G1234", 1));
  EXPECT_EQ(rig.sensor.getCommands(), (tLines{"V", "L0", "L1", "S0192001234567", "any thing",
                                              "G04472501", "G00000099", "G1234-05100"}));
  EXPECT_EQ(rig.driver->getLastRawCommand(), "G1234-05100");
}

// Catches: a sensor's refusal taken for success or for a failed line, or the other way round.
TEST(Scip1Commands, ResultsTellRefusalsFromFailures) {
  struct cRow {
    const char* answer;
    int result;
    int error;
  };
  cHeldRig rig;
  rig.port->readTimeout = 100;
  for (const cRow& row :
       {cRow{"L0\n0\nbody\n\n", 0, 0x400}, cRow{"L0\n1\n\n", 1, 0x401}, cRow{"L0\n9\n\n", 9, 0x409},
        cRow{"L0\n10\n\n", -1, 0x10}, cRow{"L1\n0\n\n", -1, 0x08}, cRow{"\n", -1, 0x08}}) {
    rig.script("L", row.answer);
    EXPECT_EQ(rig.driver->doLaser(true), row.result) << row.answer;
    EXPECT_EQ(rig.driver->getErr(), row.error) << row.answer;
  }
}

// Catches: values that are trimmed, keys that are missed, a failure that empties what was known;
// other figures than a SCIP 1.x sensor's, on the driver or on the adapter's face.
TEST(Scip1Commands, InformationIsTheSensorsOrGiven) {
  cHeldRig rig;
  const std::string body = "VEND: maker \nPROD:ABC;\nFIRM:1:2\nPROT:first\nPROT:last\nSERI\nVE\n";
  rig.script("V", record("V", "0", body));
  EXPECT_EQ(rig.driver->doVersion(), 0);
  EXPECT_EQ(rig.driver->getResponseBody(), body);
  rig.script("V", record("V", "3", "VEND:other\n"));
  EXPECT_EQ(rig.driver->doVersion(), 3);
  for (const iInfo* info :
       {static_cast<const iInfo*>(rig.driver.get()), dynamic_cast<const iInfo*>(&rig.scip2())}) {
    EXPECT_EQ((tLines{info->getVend(), info->getProd(), info->getFirm(), info->getProt(),
                      info->getSerial(), info->getStatus(), info->getLastRawCommand()}),
              (tLines{" maker ", "ABC;", "1:2", "last", "SERI", "Sensor works well.", "V"}));
    EXPECT_EQ((tNumbers{info->getMinSpot(), info->getMaxSpot(), info->getFrontSpot(),
                        info->getMinDist(), info->getMaxDist(), info->getErr()}),
              (tNumbers{44, 724, 384, 20, 4095, 0x403}));
    EXPECT_FALSE(info->isActivated());
  }
  EXPECT_EQ(rig.driver->getNumSpot(), 1024);
}

// Catches: a host whose line follows a speed that the sensor accepted, or not one it refused.
TEST(Scip1Commands, HostSpeedFollowsARefusalOnly) {
  cHeldRig rig;
  const auto getHostSpeed = [&rig] {
    const int fd = open(rig.sensor.getPath().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios attributes = {};
    EXPECT_EQ(tcgetattr(fd, &attributes), 0);
    close(fd);
    return cfgetospeed(&attributes);
  };
  EXPECT_EQ(rig.driver->doSpeed(57600), 0);
  EXPECT_EQ(getHostSpeed(), B115200);
  rig.script("S", record("S0576001234567", "2"));
  EXPECT_EQ(rig.driver->doSpeed(57600), 2);
  EXPECT_EQ(getHostSpeed(), B57600);
  rig.letGo(0);
  rig.port->readTimeout = 50;
  EXPECT_EQ(rig.driver->doSpeed(19200), -1);
  EXPECT_EQ(getHostSpeed(), B19200);
}
