// That scans hold what the world has, the driver's tests see from the other end; that they are
// skipped for a host that does not read, the one that is stopped.
#include <algorithm>

#include "sim/cSimModel.h"
#include "sim/cSimWorld.h"
#include "tests/sim/cRawHost.h"

// Catches: a record that is longer or shorter than a real sensor's, or cut into other lines; a
// last line that is dropped, padded or merged.
TEST(SimScans, HaveTheLinesOfRealOnes) {
  struct cRow {
    eSimModel model;
    const char* command;
    std::size_t bytes;
  };
  for (const cRow& row : {cRow{eSimModel::SHORT_RANGE, "MD0044072501001", 2137},
                          cRow{eSimModel::MIDDLE_RANGE, "MS0000076801001", 1615},
                          cRow{eSimModel::LONG_RANGE, "MD0000108001001", 3372},
                          cRow{eSimModel::LONG_RANGE, "MS0000108004001", 587},
                          cRow{eSimModel::LONG_RANGE, "MD0100014201001", 162},
                          cRow{eSimModel::LONG_RANGE, "MD0100016301001", 225}}) {
    cSimSetting setting;
    setting.model = row.model;
    cSimSensor sensor(setting);
    cRawHost host(sensor.getPath());
    host.ask(row.command);
    EXPECT_EQ(host.readUntil("99b\n").size(), 20u) << row.command;
    EXPECT_EQ(host.readUntil("\n").size(), 6u) << row.command;
    const std::string data = host.readRecord();
    EXPECT_EQ(data.size(), row.bytes - 26) << row.command;
    for (std::size_t end = 65; end + 1 < data.size(); end += 66) EXPECT_EQ(data[end], '\n');
  }
}

// Catches: a wrong countdown or status, a record too many, a laser that stays on; intervals that
// are not obeyed, a turning rate that is wrong, a time stamp that is not the turn's.
TEST(SimScans, CountDownAtTheTurningRate) {
  cSimSetting setting;
  setting.rate = 100;
  cSimSensor sensor(setting);
  cRawHost host(sensor.getPath());
  const auto before = std::chrono::steady_clock::now();
  EXPECT_EQ(host.ask("MD0044004401203;a b"), "MD0044004401203;a b\n00P\n\n");
  std::vector<std::uint32_t> turns;
  for (const std::string left : {"02", "01", "00"}) {
    EXPECT_EQ(host.readUntil("99b\n"), "MD00440044012" + left + ";a b\n99b\n");
    std::uint32_t stamp = 0;  // milliseconds
    for (const char c : host.readRecord().substr(0, 4))
      stamp = stamp * 64 + static_cast<std::uint32_t>(c - '0');
    turns.push_back(stamp / 10);
    EXPECT_EQ((turns.back() - turns.front()) % 3, 0u);
  }
  EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(60));
  ASSERT_TRUE(sensor.waitForSentScans(3, LONG_TIME));
  EXPECT_EQ(sensor.getSentScans(), turns);
  EXPECT_EQ(host.ask("GD0044004401"), "GD0044004401\n10Q\n\n");
  EXPECT_EQ(host.readAll(), "");
}

// Catches: scans sent faster than the line can carry them, or cut instead of skipped.
TEST(SimScans, AreSkippedOnASlowLine) {
  cSimSetting setting;
  setting.speed = 115200;
  setting.rate = 200;
  cSimSensor sensor(setting);
  cRawHost host(sensor.getPath());
  host.ask("MS0044014301005");
  for (int i = 0; i < 5; ++i) EXPECT_EQ(host.readRecord().size(), 235u);
  ASSERT_TRUE(sensor.waitForSentScans(5, LONG_TIME));
  const auto scans = sensor.getSentScans();
  for (std::size_t i = 1; i < 5; ++i) EXPECT_GE(scans[i], scans[i - 1] + 3);
  EXPECT_GE(sensor.getCounters().skippedScans, 8u);
}

// Catches: a world without error values or with distances that the model cannot measure; a cluster
// that hides a valid reading behind an error value, or loses its last partial group.
TEST(SimWorld, ReadingsAreWithinTheModel) {
  for (eSimModel kind : {eSimModel::SHORT_RANGE, eSimModel::MIDDLE_RANGE, eSimModel::LONG_RANGE}) {
    const cSimModel& model = cSimModel::of(kind);
    const cSimWorld world(model, model.rate(), 3);
    std::vector<int> groups;
    for (int step = model.first; step <= model.last; ++step) {
      const int reading = world.scan(77, step, step, 1, INT_MAX).at(0);
      const bool isError = reading >= model.errorFirst && reading <= model.errorLast;
      EXPECT_TRUE(isError || (reading >= model.near && reading <= model.far)) << reading;
      if ((step - model.first) % 4 == 0) groups.push_back(reading);
      const bool isErrorKept = groups.back() < model.near;
      if (isErrorKept == isError ? reading < groups.back() : isErrorKept) groups.back() = reading;
    }
    EXPECT_EQ(world.scan(77, model.first, model.last, 4, INT_MAX), groups);
    EXPECT_LT(*std::min_element(groups.begin(), groups.end()), model.near);
  }
}
