#include <gtest/gtest.h>

#include <tuple>

#include "sim/tarvosim.h"
#include "tests/sim/cRawHost.h"

namespace {

constexpr auto LONG_TIME = std::chrono::seconds(10);

struct cRange {
  eSimModel model;
  int first, last;
};
const cRange WHOLE[] = {{eSimModel::SHORT_RANGE, 44, 725},
                        {eSimModel::MIDDLE_RANGE, 0, 768},
                        {eSimModel::LONG_RANGE, 0, 1080}};

std::string command(const char* name, int first, int last, int cluster, const char* rest) {
  char text[32];
  std::snprintf(text, sizeof text, "%s%04d%04d%02d%s", name, first, last, cluster, rest);
  return text;
}

/// A sensor that keeps nobody waiting.
cSimSetting unpaced(eSimModel model) {
  cSimSetting setting;
  setting.model = model;
  setting.paced = false;
  return setting;
}

class SimScan : public testing::TestWithParam<std::tuple<int, int>> {};

}  // namespace

// Catches: readings, groups, encodings, clipping or sums that are not those of the world; bytes
// lost, doubled or reordered when the reader sets the pace.
TEST_P(SimScan, IsTheTruth) {
  const cRange& range = WHOLE[std::get<0>(GetParam())];
  const int cluster = std::get<1>(GetParam());
  cSimSensor sensor(unpaced(range.model));
  cRawHost host(sensor.getPath());
  std::size_t sent = 0;
  for (const char* name : {"MD", "MS", "GD", "GS"}) {
    const bool running = name[0] == 'M';
    if (!running) host.ask("BM");
    const std::string rest = running ? "012;7" : ";7";
    std::string record = host.ask(command(name, range.first, range.last, cluster, rest.c_str()));
    const int records = running ? 12 : 1;
    for (int i = 0; i < records; ++i) {
      if (running) record = host.readRecord();
      ASSERT_TRUE(sensor.waitForSentScans(++sent, LONG_TIME));
      const int width = name[1] == 'D' ? 3 : 2;
      const auto truth = sensor.getTrueDistances(sensor.getSentScans()[sent - 1], range.first,
                                                 range.last, cluster, width == 2 ? 4095 : INT_MAX);
      EXPECT_EQ(raw::readings(record, width), truth) << name;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Sim, SimScan,
                         testing::Combine(testing::Range(0, 3), testing::Values(0, 1, 3, 99)));

// Catches: a record that is longer or shorter than a real sensor's, line by line.
TEST(SimScans, HaveTheSizesOfRealOnes) {
  struct cRow {
    int model, cluster;
    std::size_t wide, narrow;
  };
  for (const cRow& row : {cRow{0, 1, 2137, 1435}, cRow{1, 1, 2408, 1615}, cRow{2, 1, 3372, 2257},
                          cRow{2, 4, 866, 587}}) {
    const cRange& range = WHOLE[row.model];
    cSimSensor sensor(unpaced(range.model));
    cRawHost host(sensor.getPath());
    for (const char* name : {"MD", "MS"}) {
      host.ask(command(name, range.first, range.last, row.cluster, "001"));
      EXPECT_EQ(host.readRecord().size(), name[1] == 'D' ? row.wide : row.narrow);
    }
  }
}

// Catches: a last line that is dropped, padded or merged; a reading that may not straddle lines.
TEST(SimScans, LastLinesHaveTheRest) {
  struct cRow {
    int readings;
    std::size_t lines, last;
  };
  cSimSensor sensor(unpaced(eSimModel::LONG_RANGE));
  cRawHost host(sensor.getPath());
  for (const cRow& row : {cRow{1, 1, 3}, cRow{21, 1, 63}, cRow{22, 2, 2}, cRow{42, 2, 62},
                          cRow{43, 3, 1}, cRow{64, 3, 64}, cRow{171, 9, 1}}) {
    host.ask(command("MD", 100, 100 + row.readings - 1, 1, "001"));
    const auto lines = raw::lines(host.readRecord());
    ASSERT_EQ(lines.size(), 3 + row.lines + 1) << row.readings;
    for (std::size_t i = 3; i + 2 < lines.size(); ++i) EXPECT_EQ(lines[i].size(), 65u);
    EXPECT_EQ(lines[lines.size() - 2].size(), row.last + 1) << row.readings;
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

// Catches: a QT, another command or a second start that a running scan does not heed.
TEST(SimScans, OtherCommandsInBetween) {
  cSimSetting setting;
  setting.rate = 500;
  cSimSensor sensor(setting);
  cRawHost host(sensor.getPath());
  host.ask("MD0044010001000;1");
  EXPECT_TRUE(sensor.isScanning());
  host.write("TM2;2\n");
  const std::string answer = "TM2;2\n03S\n\n";
  EXPECT_NE(host.readUntil(answer).find(answer), std::string::npos);
  host.write("MS0044010001000;3\n");
  host.readUntil("MS0044010001000;3\n00P\n\n");
  EXPECT_EQ(host.readRecord().substr(0, 18), "MS0044010001000;3\n");
  host.readAll();
  EXPECT_FALSE(sensor.isScanning());
  EXPECT_EQ(host.ask("BM"), "BM\n00P\n\n");
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
  const auto elapsed = std::chrono::steady_clock::now() - before;
  ASSERT_TRUE(sensor.waitForSentScans(4, LONG_TIME));
  const auto scans = sensor.getSentScans();
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_EQ((scans[i] - scans[0]) % 3, 0u);
    const std::string stamp = raw::lines(records[i])[2].substr(0, 4);
    EXPECT_EQ(raw::decode(stamp, 4)[0], static_cast<int>(scans[i]) * 10);
  }
  EXPECT_GE(elapsed, std::chrono::milliseconds(90));
}

// Catches: scans sent faster than the line can carry them, or cut instead of skipped.
TEST(SimScans, AreSkippedOnASlowLine) {
  cSimSetting setting;
  setting.speed = 115200;
  setting.rate = 200;
  cSimSensor sensor(setting);
  cRawHost host(sensor.getPath(), 115200);
  const auto before = std::chrono::steady_clock::now();
  host.ask("MS0044014301005");
  std::size_t bytes = 0;
  for (int i = 0; i < 5; ++i) {
    const std::string record = host.readRecord();
    EXPECT_EQ(raw::readings(record, 2).size(), 100u);
    bytes += record.size();
  }
  const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - before;
  EXPECT_GE(elapsed.count(), static_cast<double>(bytes) * 10 / 115200);
  ASSERT_TRUE(sensor.waitForSentScans(5, LONG_TIME));
  const auto scans = sensor.getSentScans();
  for (std::size_t i = 1; i < 5; ++i) EXPECT_GE(scans[i], scans[i - 1] + 3);
  EXPECT_GE(sensor.getCounters().skippedScans, 8u);
}

// Catches: a record cut, or a sensor stuck, when the host reads late.
TEST(SimScans, AreSkippedForASlowReader) {
  cSimSetting setting;
  setting.model = eSimModel::LONG_RANGE;
  setting.rate = 1000;
  setting.scanningAtStart = true;
  cSimSensor sensor(setting);
  cRawHost host(sensor.getPath());
  ASSERT_TRUE(sensor.waitFor(&cSimCounters::skippedScans, 3, LONG_TIME));
  const auto sentBefore = sensor.getSentScans().size();
  for (std::size_t i = 0; i < 2 * sentBefore + 3; ++i) {
    const std::string record = host.readRecord();
    ASSERT_EQ(record.substr(0, 18), "MD0000108001000;4\n");
    ASSERT_EQ(raw::readings(record, 3).size(), 1081u);
  }
  host.readAll();
  EXPECT_EQ(host.ask("BM"), "BM\n00P\n\n");
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
