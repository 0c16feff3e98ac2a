// That a scan holds what the world has is checked from the other end by the driver's tests; that
// scans are skipped on a slow line, by the scanner's; line speeds and plugs, by both.
#include "tests/sim/cRawHost.h"

using M = eSimModel;

// Catches: a record that is longer or shorter than a real sensor's, or cut into other lines; a last
// line that is dropped, padded or merged; an echo whose count is wrong.
TEST(SimScans, HaveTheLinesOfRealOnes) {
  for (const auto& [model, command, bytes] : {std::tuple(M::SHORT_RANGE, "MD0044072501000", 2137u),
                                              std::tuple(M::MIDDLE_RANGE, "MS0000076801001", 1615u),
                                              std::tuple(M::LONG_RANGE, "MD0000108001001", 3372u),
                                              std::tuple(M::LONG_RANGE, "MS0000108004001", 587u),
                                              std::tuple(M::LONG_RANGE, "MD0100014201001", 162u),
                                              std::tuple(M::LONG_RANGE, "MD0100016301001", 225u)}) {
    cSimSetting setting;
    setting.model = model;
    cRawHost host(setting);
    host.ask(command);
    EXPECT_EQ(host.readUntil("99b\n"), std::string(command).substr(0, 13) + "00\n99b\n");
    EXPECT_EQ(host.readUntil("\n").size(), 6u) << command;
    const std::string data = host.readRecord();
    EXPECT_EQ(data.size(), bytes - 26) << command;
    for (std::size_t end = 65; end + 1 < data.size(); end += 66) EXPECT_EQ(data[end], '\n');
  }
}

// Catches: a wrong countdown or status, a record too many, a laser that stays on; an interval that
// is ignored, a wrong turning rate, a time stamp that is not the turn's.
TEST(SimScans, CountDownAtTheTurningRate) {
  cSimSetting setting;
  setting.rate = 100;
  cRawHost host(setting);
  const auto before = std::chrono::steady_clock::now();
  EXPECT_EQ(host.ask("MD0044004401203;a b"), "MD0044004401203;a b\n00P\n\n");
  std::vector<std::uint32_t> turns;
  for (const std::string remaining : {"02", "01", "00"}) {
    EXPECT_EQ(host.readUntil("99b\n"), "MD00440044012" + remaining + ";a b\n99b\n");
    std::uint32_t stamp = 0;  // milliseconds
    for (const char c : host.readRecord().substr(0, 4))
      stamp = stamp * 64 + static_cast<std::uint32_t>(c - '0');
    turns.push_back(stamp / 10);
    EXPECT_EQ((stamp - turns.front() * 10) % 30, 0u);
  }
  EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(60));
  ASSERT_TRUE(host.sensor.waitForSentScans(3, LONG_TIME));
  EXPECT_EQ(host.sensor.getSentScans(), turns);
  EXPECT_EQ(host.ask("GD0044004401"), "GD0044004401\n10Q\n\n");
  EXPECT_EQ(host.readAll(), "");
}
