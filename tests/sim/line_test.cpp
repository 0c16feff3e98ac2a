#include <gtest/gtest.h>
#include <termios.h>
#include <unistd.h>

#include <filesystem>
#include <optional>

#include "sim/tarvosim.h"
#include "tests/sim/cRawHost.h"

namespace {

namespace fs = std::filesystem;

cSimSetting at(int speed, eSimGarbage garbage) {
  cSimSetting setting;
  setting.speed = speed;
  setting.garbage = garbage;
  return setting;
}

/// A name for a link of this process, gone at the end.
struct cTemporary {
  fs::path path = fs::temp_directory_path() / ("sim-link-" + std::to_string(getpid()));
  ~cTemporary() { fs::remove(path); }
};

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
  struct cRow {
    const char* command;
    const char* status;
    int speed;
    speed_t constant;
  };
  for (const cRow& row :
       {cRow{"S1152001234567", "0", 115200, B115200}, cRow{"SCIP2.0", "0", 115200, B115200},
        cRow{"SS500000", "00P", 500000, B500000}, cRow{"RS", "00P", 19200, B19200}}) {
    EXPECT_EQ(host.ask(row.command), std::string(row.command) + "\n" + row.status + "\n\n");
    host.setSpeed(row.constant);
    EXPECT_EQ(host.ask("XX").substr(0, 3), "XX\n");
    EXPECT_EQ(sensor.getSpeed(), row.speed);
  }
}

// Catches: hosts left waiting by a pulled cable, a sensor that does not come back as powered on, a
// link that stays behind or is taken away from a later sensor.
TEST(SimLine, IsUnpluggedAndPluggedIn) {
  cTemporary link;
  cSimSetting setting;
  setting.link = link.path;
  setting.dialect = eSimDialect::SCIP1_SWITCH;
  {
    cSimSensor sensor(setting);
    cRawHost host(link.path);
    host.ask("SCIP2.0");
    host.ask("MD0044072501000");
    EXPECT_TRUE(sensor.isScanning());
    sensor.setFault(eSimFault::UNPLUGGED);
    EXPECT_TRUE(host.isHungUp());
    EXPECT_FALSE(fs::is_symlink(link.path));
    EXPECT_FALSE(sensor.isScanning());
    sensor.say("into the void");
    sensor.clearFaults();
    EXPECT_EQ(fs::read_symlink(link.path), sensor.getPath());
    cRawHost again(link.path);
    EXPECT_EQ(again.ask("QT"), "QT\n1\n\n");
    std::optional<cSimSensor> later(setting);
    EXPECT_EQ(fs::read_symlink(link.path), later->getPath());
  }
  EXPECT_FALSE(fs::is_symlink(link.path));
}
