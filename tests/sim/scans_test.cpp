// That scans hold what the world has, the driver's tests see from the other end; that they are
// skipped for a host that does not read, the one that is stopped.
#include <gtest/gtest.h>

#include "sim/cSimModel.h"
#include "sim/cSimTurn.h"
#include "sim/cSimWorld.h"
#include "sim/tarvosim.h"
#include "tests/sim/cRawHost.h"

namespace {

/// A sensor that keeps nobody waiting.
cSimSetting unpaced(eSimModel model) {
  cSimSetting setting;
  setting.model = model;
  setting.paced = false;
  return setting;
}

std::vector<std::string> linesOf(const std::string& record) {
  std::vector<std::string> all;
  std::istringstream stream(record);
  for (std::string line; std::getline(stream, line);) all.push_back(line);
  return all;
}

}  // namespace

// Catches: a record that is longer or shorter than a real sensor's, or cut into other lines; a
// last line that is dropped, padded or merged.
TEST(SimScans, HaveTheLinesOfRealOnes) {
  struct cRow {
    eSimModel model;
    const char* command;
    std::size_t bytes;
  };
  for (const cRow& row : {cRow{eSimModel::SHORT_RANGE, "MD0044072501001", 2137},
                          cRow{eSimModel::SHORT_RANGE, "MS0044072501001", 1435},
                          cRow{eSimModel::MIDDLE_RANGE, "MD0000076801001", 2408},
                          cRow{eSimModel::MIDDLE_RANGE, "MS0000076801001", 1615},
                          cRow{eSimModel::LONG_RANGE, "MD0000108001001", 3372},
                          cRow{eSimModel::LONG_RANGE, "MS0000108001001", 2257},
                          cRow{eSimModel::LONG_RANGE, "MD0000108004001", 866},
                          cRow{eSimModel::LONG_RANGE, "MS0000108004001", 587},
                          cRow{eSimModel::LONG_RANGE, "MD0100014201001", 162},
                          cRow{eSimModel::LONG_RANGE, "MD0100016301001", 225}}) {
    cSimSensor sensor(unpaced(row.model));
    cRawHost host(sensor.getPath());
    host.ask(row.command);
    const std::string record = host.readRecord();
    EXPECT_EQ(record.size(), row.bytes) << row.command;
    const auto lines = linesOf(record);
    ASSERT_GT(lines.size(), 4u) << row.command;
    for (std::size_t i = 3; i + 2 < lines.size(); ++i) EXPECT_EQ(lines[i].size(), 65u);
    EXPECT_LE(lines[lines.size() - 2].size(), 65u) << row.command;
  }
}

// Catches: a wrong countdown or status, a record too many, a laser that stays on.
TEST(SimScans, CountDown) {
  cSimSensor sensor(unpaced(eSimModel::SHORT_RANGE));
  cRawHost host(sensor.getPath());
  EXPECT_EQ(host.ask("MD0044004401003;a b"), "MD0044004401003;a b\n00P\n\n");
  for (const char* left : {"02", "01", "00"}) {
    const std::string head = std::string("MD00440044010") + left + ";a b\n99b\n";
    EXPECT_EQ(host.readRecord().substr(0, head.size()), head);
  }
  EXPECT_EQ(host.ask("GD0044004401"), "GD0044004401\n10Q\n\n");
  EXPECT_EQ(host.readAll(), "");
  host.ask("MS0044004401000");
  for (int i = 0; i < 3; ++i) EXPECT_EQ(host.readRecord().substr(13, 2), "00");
}

// Catches: intervals that are not obeyed, a turning rate that is wrong, a time stamp that is not
// the turn's.
TEST(SimScans, ComeAtTheTurningRate) {
  cSimSetting setting;
  setting.rate = 100;
  cSimSensor sensor(setting);
  cRawHost host(sensor.getPath());
  const auto before = std::chrono::steady_clock::now();
  host.ask("MD0044004401204");
  std::vector<std::string> records;
  for (int i = 0; i < 4; ++i) records.push_back(host.readRecord());
  EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(90));
  ASSERT_TRUE(sensor.waitForSentScans(4, LONG_TIME));
  const auto scans = sensor.getSentScans();
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_EQ((scans[i] - scans[0]) % 3, 0u);
    std::uint32_t stamp = 0;
    for (const char c : records[i].substr(sizeof "MD0044004401204\n99b\n" - 1, 4)) {
      stamp = stamp * 64 + static_cast<std::uint32_t>(c - '0');
    }
    EXPECT_EQ(stamp, scans[i] * 10);
  }
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

// Catches: a sensor that waits for ever for room that a host's flush has made.
TEST(SimScans, GoOnAfterAFlush) {
  cSimSetting setting = unpaced(eSimModel::LONG_RANGE);
  setting.scanningAtStart = true;
  cSimSensor sensor(setting);
  cRawHost host(sensor.getPath());
  ASSERT_TRUE(sensor.waitForSentScans(5, LONG_TIME));
  host.flush();
  EXPECT_TRUE(sensor.waitForSentScans(9, LONG_TIME));
  EXPECT_EQ(sensor.getCounters().skippedScans, 0u);
}

// Catches: a world without error values or with distances that the model cannot measure; a cluster
// that hides a valid reading behind an error value, or loses its last partial group.
TEST(SimWorld, ReadingsAreWithinTheModel) {
  for (eSimModel kind : {eSimModel::SHORT_RANGE, eSimModel::MIDDLE_RANGE, eSimModel::LONG_RANGE}) {
    const cSimModel& model = cSimModel::of(kind);
    const cSimWorld world(model, model.rate(), 3);
    const auto scan = world.scan(77, model.first, model.last, 1, INT_MAX);
    int errors = 0, valid = 0;
    std::vector<int> groups;
    for (std::size_t i = 0; i < scan.size(); ++i) {
      const bool isValid = scan[i] >= model.near && scan[i] <= model.far;
      errors += scan[i] >= model.errorFirst && scan[i] <= model.errorLast;
      valid += isValid;
      if (i % 4 == 0) groups.push_back(scan[i]);
      const bool isKeptValid = groups.back() >= model.near;
      if (isValid == isKeptValid ? scan[i] < groups.back() : isValid) groups.back() = scan[i];
    }
    EXPECT_EQ(errors + valid, model.last - model.first + 1);
    EXPECT_GT(errors, 0);
    EXPECT_GT(valid, errors);
    EXPECT_EQ(world.scan(77, model.first, model.last, 4, INT_MAX), groups);
  }
}

// Catches: drift of the turning rate, and a change of rate that jumps.
TEST(SimTurn, DoesNotDrift) {
  const cSimTurn::cMoment start{};
  cSimTurn turns(start, 15);
  EXPECT_EQ(turns.endOf(15 * 3600) - start, std::chrono::hours(1));
  EXPECT_EQ(turns.endedAt(start + std::chrono::hours(1)), 54000u);
  EXPECT_EQ(turns.endedAt(start + std::chrono::hours(1) - std::chrono::nanoseconds(1)), 53999u);
  turns.setRate(10, start + std::chrono::milliseconds(1010));
  EXPECT_EQ(turns.stampOf(15), 1000u);
  EXPECT_EQ(turns.stampOf(17), 1200u);
}
