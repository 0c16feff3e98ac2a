// That it is unplugged and comes back, the faults' tests see.
#include "tests/sim/cRawHost.h"

// Catches: a host that is heard, or hears, at another speed; garbage that does not stay in the
// buffer, or has line feeds where it should have none.
TEST(SimLine, HearsAndIsHeardAtItsOwnSpeedOnly) {
  for (const auto kind : {eSimGarbage::LINES, eSimGarbage::NO_LINES}) {
    cSimSetting setting;
    setting.speed = 19200;
    setting.garbage = kind;
    cSimSensor sensor(setting);
    cRawHost host(sensor.getPath(), B115200);
    host.write("QT\n");
    ASSERT_TRUE(sensor.waitFor(&cSimCounters::bytesHeard, 3, LONG_TIME));
    host.setSpeed(B19200);
    host.write("\nBM\n");
    EXPECT_EQ(host.readUntil("BM\n00P\n\n").find("QT"), std::string::npos);
    host.setSpeed(B115200);
    const std::string text(100, 'x');
    const std::uint64_t before = sensor.getCounters().bytesWritten;
    sensor.say(text);
    ASSERT_TRUE(sensor.waitFor(&cSimCounters::bytesWritten, before + text.size(), LONG_TIME));
    host.setSpeed(B19200);
    const std::string said = host.ask("QT");
    EXPECT_EQ(said.find(text), std::string::npos);
    EXPECT_EQ(said.find('\n') < 100, kind == eSimGarbage::LINES);
  }
}

// Catches: a line speed that changes before the reply is out, or is kept by a reset; a sensor that
// stays in SCIP 1.x after the switch.
TEST(SimLine, ChangesItsSpeedAfterTheReply) {
  cSimSetting setting;
  setting.speed = 19200;
  setting.garbage = eSimGarbage::NO_LINES;
  setting.dialect = eSimDialect::SCIP1_SWITCH;
  cSimSensor sensor(setting);
  cRawHost host(sensor.getPath(), B19200);
  for (const auto& [command, answer, speed] :
       {std::tuple("S1152001234567", "S1152001234567\n0\n\n", speed_t{B115200}),
        std::tuple("SCIP2.0", "SCIP2.0\n0\n\n", speed_t{B115200}),
        std::tuple("SS500000", "SS500000\n00P\n\n", speed_t{B500000}),
        std::tuple("RS", "RS\n00P\n\n", speed_t{B19200})}) {
    EXPECT_EQ(host.ask(command), answer);
    host.setSpeed(speed);
    EXPECT_EQ(host.ask("XX").substr(0, 3), "XX\n");
  }
}
