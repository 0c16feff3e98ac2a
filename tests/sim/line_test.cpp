// That a sensor can be unplugged and plugged in again is checked by the tests of faults.
#include "tests/sim/cRawHost.h"

// Catches: a host that can talk to the sensor, or hears it, at another speed; garbage that does not
// stay in the command buffer, or has line feeds where it should have none.
TEST(SimLine, CarriesBytesAtItsOwnSpeedOnly) {
  for (const auto garbage : {eSimGarbage::LINES, eSimGarbage::NO_LINES}) {
    cSimSetting setting;
    setting.speed = 115200;
    setting.garbage = garbage;
    cRawHost host(setting);
    host.setSpeed(B19200);
    const std::string text(1000, 'x');
    host.sensor.inject(text);
    host.write("QT\n");
    ASSERT_TRUE(host.sensor.waitFor(&cSimCounters::bytesWritten, text.size(), LONG_TIME));
    ASSERT_TRUE(host.sensor.waitFor(&cSimCounters::bytesReceived, 3, LONG_TIME));
    host.setSpeed(B115200);
    host.write("\nBM\n");
    const std::string received = host.readUntil("BM\n00P\n\n");
    EXPECT_EQ(received.find("QT"), std::string::npos);
    EXPECT_EQ(received.find("xxx"), std::string::npos);
    EXPECT_EQ(received.find('\n') < text.size(), garbage == eSimGarbage::LINES);
  }
}

// Catches: a line speed that changes before the reply is sent, or survives a reset; a sensor that
// stays in SCIP 1.x after the switch.
TEST(SimLine, ChangesItsSpeedAfterTheReply) {
  cSimSetting setting;
  setting.speed = 19200;
  setting.dialect = eSimDialect::SCIP1_SWITCH;
  cRawHost host(setting);
  for (const auto& [command, status, speed] :
       {std::tuple("S1152001234567", "0", B115200), std::tuple("SCIP2.0", "0", B115200),
        std::tuple("SS500000", "00P", B500000), std::tuple("RS", "00P", B19200)}) {
    EXPECT_EQ(host.ask(command), std::string(command) + "\n" + status + "\n\n");
    host.setSpeed(static_cast<speed_t>(speed));
    EXPECT_EQ(host.ask("XX").substr(0, 3), "XX\n");
  }
}
