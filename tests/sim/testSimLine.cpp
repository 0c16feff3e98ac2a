#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <system_error>

#include "sim/tarvosim.h"
#include "tests/sim/cRawHost.h"

namespace {

namespace fs = std::filesystem;
constexpr auto LONG_TIME = std::chrono::seconds(10);

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

std::size_t openDescriptors() {
  return static_cast<std::size_t>(
      std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator()));
}

}  // namespace

// Catches: a host that is heard at another speed, and garbage that does not stay in the buffer.
TEST(SimLine, HearsOnlyItsOwnSpeed) {
  cSimSensor sensor(at(19200, eSimGarbage::NO_LINES));
  cRawHost host(sensor.getPath(), 115200);
  host.write("QT\nBM\n");
  ASSERT_TRUE(sensor.waitFor(&cSimCounters::bytesHeard, 6, LONG_TIME));
  EXPECT_TRUE(sensor.getCommands().empty());
  host.setSpeed(19200);
  const std::string answer = host.ask("QT");
  ASSERT_EQ(answer.size(), 6 + 2 + 1 + 3 + 2u);
  EXPECT_EQ(answer.substr(6), "QT\n0Ee\n\n");
  EXPECT_EQ(host.ask("QT"), "QT\n00P\n\n");
}

// Catches: garbage that differs from run to run, or has line feeds where it should not.
TEST(SimLine, IsGarbageAtAnotherSpeed) {
  const std::string text(100, 'x');
  const auto said = [&](eSimGarbage garbage) {
    cSimSensor sensor(at(19200, garbage));
    cRawHost host(sensor.getPath(), 57600);
    sensor.say(text);
    return host.readBytes(100);
  };
  const std::string lines = said(eSimGarbage::LINES);
  const std::string none = said(eSimGarbage::NO_LINES);
  EXPECT_EQ(said(eSimGarbage::NO_LINES), none);
  EXPECT_NE(none, text);
  EXPECT_EQ(none.size(), 100u);
  EXPECT_NE(lines.find('\n'), std::string::npos);
  EXPECT_EQ(none.find('\n'), std::string::npos);
}

// Catches: a line speed that changes before the reply is out, or is kept by a reset.
TEST(SimLine, ChangesItsSpeedAfterTheReply) {
  cSimSetting setting = at(19200, eSimGarbage::NO_LINES);
  setting.dialect = eSimDialect::SCIP1_SWITCH;
  cSimSensor sensor(setting);
  cRawHost host(sensor.getPath(), 19200);
  struct cRow {
    const char* command;
    const char* status;
    int speed;
  };
  for (const cRow& row : {cRow{"S1152001234567", "0", 115200}, cRow{"SCIP2.0", "0", 115200},
                          cRow{"SS500000", "00P", 500000}, cRow{"RS", "00P", 19200}}) {
    EXPECT_EQ(host.ask(row.command), std::string(row.command) + "\n" + row.status + "\n\n");
    host.setSpeed(row.speed);
    EXPECT_EQ(host.ask("XX").substr(0, 3), "XX\n");
    EXPECT_EQ(sensor.getSpeed(), row.speed);
  }
}

// Catches: a setting that is taken and cannot work.
TEST(SimLine, RefusesImpossibleSettings) {
  EXPECT_THROW(cSimSensor(at(12345, eSimGarbage::LINES)), std::system_error);
  cSimSetting setting;
  setting.rate = -1;
  EXPECT_THROW(cSimSensor{setting}, std::system_error);
  setting.rate = 0;
  setting.scanningAtStart = true;
  setting.leftCommand = "GD0044072501";
  EXPECT_THROW(cSimSensor{setting}, std::system_error);
}

// Catches: hosts left waiting by a pulled cable, and a sensor that does not come back as powered
// on.
TEST(SimLine, IsUnpluggedAndPluggedIn) {
  cTemporary link;
  cSimSetting setting;
  setting.link = link.path;
  cSimSensor sensor(setting);
  cRawHost host(link.path);
  host.ask("MD0044072501000");
  sensor.setFault(eSimFault::UNPLUGGED);
  EXPECT_TRUE(host.isHungUp());
  EXPECT_FALSE(fs::is_symlink(link.path));
  EXPECT_FALSE(sensor.isScanning());
  sensor.say("into the void");
  sensor.clearFaults();
  EXPECT_EQ(fs::read_symlink(link.path), sensor.getPath());
  cRawHost again(link.path);
  EXPECT_EQ(again.ask("BM"), "BM\n00P\n\n");
}

// Catches: a link that replaces a file, is not moved over an old one, or stays behind.
TEST(SimLine, KeepsALink) {
  cTemporary link;
  cSimSetting setting;
  setting.link = link.path;
  std::ofstream(link.path) << "kept";
  EXPECT_THROW(cSimSensor{setting}, std::system_error);
  EXPECT_EQ(fs::file_size(link.path), 4u);
  fs::remove(link.path);
  fs::create_symlink("/nowhere", link.path);
  {
    cSimSensor first(setting);
    EXPECT_EQ(fs::read_symlink(link.path), first.getPath());
    std::optional<cSimSensor> second(setting);
    EXPECT_EQ(fs::read_symlink(link.path), second->getPath());
    EXPECT_NE(first.getPath(), second->getPath());
  }
  EXPECT_FALSE(fs::is_symlink(link.path));
}

// Catches: sensors in one process that share a state.
TEST(SimLine, TwoSensors) {
  cSimSetting setting;
  cSimSensor one(setting);
  setting.seed = 2;
  cSimSensor two(setting);
  cRawHost hostOne(one.getPath()), hostTwo(two.getPath());
  hostOne.ask("BM");
  EXPECT_EQ(hostTwo.ask("GD0044004401"), "GD0044004401\n10Q\n\n");
  EXPECT_NE(hostOne.ask("VV").find("S0000001"), std::string::npos);
  EXPECT_NE(hostTwo.ask("VV").find("S0000002"), std::string::npos);
}

// Catches: a state in which the sensor's thread does not end, and descriptors left open.
TEST(SimLine, EndsInEveryState) {
  const std::size_t before = openDescriptors();
  const auto run = [](cSimSetting setting, auto bring) {
    std::optional<cSimSensor> sensor(setting);
    cRawHost host(sensor->getPath(), setting.speed);
    bring(*sensor, host);
    const auto begin = std::chrono::steady_clock::now();
    sensor.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(2));
  };
  cSimSetting idle, scanning, flooding;
  scanning.scanningAtStart = flooding.scanningAtStart = true;
  flooding.paced = false;
  run(idle, [](cSimSensor&, cRawHost&) {});
  run(idle, [](cSimSensor& sensor, cRawHost&) { sensor.unplug(); });
  run(scanning, [](cSimSensor&, cRawHost& host) { host.readRecord(); });
  run(flooding,
      [](cSimSensor& sensor, cRawHost&) { EXPECT_TRUE(sensor.waitForSentScans(5, LONG_TIME)); });
  run(idle, [](cSimSensor& sensor, cRawHost& host) {
    sensor.setFault(eSimFault::LATE, 60000);
    host.write("VV\n");
    EXPECT_TRUE(sensor.waitForCommand("VV", LONG_TIME));
  });
  run(flooding, [](cSimSensor& sensor, cRawHost&) { sensor.setFault(eSimFault::STALL); });
  EXPECT_EQ(openDescriptors(), before);
}
