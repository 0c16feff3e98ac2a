#include <gtest/gtest.h>
#include <filesystem>
#include <optional>

#include "sim/tarvosim.h"
#include "tests/sim/cRawHost.h"
#include "tests/tools/cTempFolder.h"

namespace {

namespace fs = std::filesystem;

cSimSetting at(int speed, eSimGarbage garbage) {
  cSimSetting setting;
  setting.speed = speed;
  setting.garbage = garbage;
  return setting;
}

}  // namespace

// Catches: a host that is heard, or hears, at another speed; garbage that does not stay in the
// buffer, or has line feeds where it should have none.
TEST(SimLine, HearsAndIsHeardAtItsOwnSpeedOnly) {
  for (const auto kind : {eSimGarbage::LINES, eSimGarbage::NO_LINES}) {
    cSimSensor sensor(at(19200, kind));
    cRawHost host(sensor.getPath(), B115200);
    const bool hasLines = kind == eSimGarbage::LINES;
    if (!hasLines) host.write("QT\nBM\n");
    ASSERT_TRUE(sensor.waitFor(&cSimCounters::bytesHeard, hasLines ? 0 : 6, LONG_TIME));
    const std::string text(100, 'x');
    sensor.say(text);
    ASSERT_TRUE(sensor.waitFor(&cSimCounters::bytesWritten, text.size(), LONG_TIME));
    EXPECT_TRUE(sensor.getCommands().empty());
    host.setSpeed(B19200);
    host.write("QT\nBM\n");
    const std::string said = host.readUntil("BM\n00P\n\n");
    EXPECT_NE(said.substr(0, 100), text);
    EXPECT_EQ(said.substr(0, 100).find('\n') != std::string::npos, hasLines);
    EXPECT_EQ(said.substr(hasLines ? 100 : 106),
              (hasLines ? "QT\n00P" : "QT\n0Ee") + std::string("\n\nBM\n00P\n\n"));
  }
}

// Catches: a line speed that changes before the reply is out, or is kept by a reset; a sensor that
// stays in SCIP 1.x after the switch.
TEST(SimLine, ChangesItsSpeedAfterTheReply) {
  cSimSetting setting = at(19200, eSimGarbage::NO_LINES);
  setting.dialect = eSimDialect::SCIP1_SWITCH;
  cSimSensor sensor(setting);
  cRawHost host(sensor.getPath(), B19200);
  for (const auto& [command, answer, speed, constant] :
       {std::tuple("S1152001234567", "S1152001234567\n0\n\n", 115200, speed_t{B115200}),
        std::tuple("SCIP2.0", "SCIP2.0\n0\n\n", 115200, speed_t{B115200}),
        std::tuple("SS500000", "SS500000\n00P\n\n", 500000, speed_t{B500000}),
        std::tuple("RS", "RS\n00P\n\n", 19200, speed_t{B19200})}) {
    EXPECT_EQ(host.ask(command), answer);
    host.setSpeed(constant);
    EXPECT_EQ(host.ask("XX").substr(0, 3), "XX\n");
    EXPECT_EQ(sensor.getSpeed(), speed);
  }
}

// Catches: hosts left waiting by a pulled cable, a sensor that does not come back as powered on, a
// link that stays behind or is taken away from a later sensor.
TEST(SimLine, IsUnpluggedAndPluggedIn) {
  const cTempFolder folder;
  const std::string link = folder / "sensor";
  cSimSetting setting;
  setting.link = link;
  setting.dialect = eSimDialect::SCIP1_SWITCH;
  {
    cSimSensor sensor(setting);
    cRawHost host(link);
    host.ask("SCIP2.0");
    host.ask("MD0044072501000");
    EXPECT_TRUE(sensor.isScanning());
    sensor.setFault(eSimFault::UNPLUGGED);
    EXPECT_TRUE(host.isHungUp());
    EXPECT_FALSE(fs::is_symlink(link));
    EXPECT_FALSE(sensor.isScanning());
    sensor.say("into the void");
    sensor.clearFaults();
    EXPECT_EQ(fs::read_symlink(link), sensor.getPath());
    cRawHost again(link);
    EXPECT_EQ(again.ask("QT"), "QT\n1\n\n");
    std::optional<cSimSensor> later(setting);
    EXPECT_EQ(fs::read_symlink(link), later->getPath());
  }
  EXPECT_FALSE(fs::is_symlink(link));
}
