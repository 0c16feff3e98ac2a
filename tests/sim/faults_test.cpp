#include <algorithm>

#include "tests/sim/cRawHost.h"

using F = eSimFault;

const std::string CLEAN = "TM2;5\n03S\n\n";  // the answer to "TM2;5"

class SimFaults : public testing::Test {
 protected:
  /// What arrives instead of the answer to "TM2;5", "|" for each line feed.
  std::string corrupted(const char* fault, int value) {
    host.sensor.setFault(simFaultByName(fault).value(), value, "TM2", 1);
    host.write("TM2;5\n");
    std::string bytes = host.readAll();
    std::replace(bytes.begin(), bytes.end(), '\n', '|');
    return bytes;
  }

  cRawHost host;
};

// Catches: a content fault that does nothing, does something else, or does not end after its count.
TEST_F(SimFaults, CorruptARecord) {
  const int status = simStatus("0I");
  const std::tuple<const char*, int, const char*> rows[] = {
      {"flipped-bit", 8, "TL2;5|03S||"},      {"wrong-sum", 0, "TM2;5|03T||"},
      {"cut-short", 8, "TM2;5|03"},           {"lost-line-feed", 2, "TM2;5|03S|"},
      {"lost-line", -1, "TM2;5||"},           {"lost-end", 0, "TM2;5|03S|"},
      {"doubled-line", 1, "TM2;5|03S|03S||"}, {"swapped-lines", 0, "03S|TM2;5||"},
      {"empty-status", 0, "TM2;5|||"},        {"cr-lf", 0, "TM2;5\r|03S\r|\r|"},
      {"status", status, "TM2;5|0Ii||"},      {"status", 98, "TM2;5|98a||"},
      {"other-echo", 0, "XX2;5|03S||"},       {"other-tag", -1, "TM2;4|03S||"},
      {"endless-line", 5, "ooooo"},           {"no-answer", 0, ""}};
  for (const auto& [name, value, bytes] : rows) {
    EXPECT_EQ(corrupted(name, value), bytes) << name;
    EXPECT_EQ(host.ask("TM2;5"), CLEAN);
  }
}

// Catches: random damage of another size, or outside the record.
TEST_F(SimFaults, CorruptAtRandom) {
  EXPECT_EQ(corrupted("garbage", 40).substr(40), "TM2;5|03S||");
  EXPECT_EQ(corrupted("lost-bytes", 3).size(), CLEAN.size() - 3);
  const std::string forced = corrupted("forced-byte", 0xFF);
  EXPECT_EQ(std::count(forced.begin(), forced.end(), '\xFF'), 1);
  const std::string more = corrupted("unsolicited", 9);
  EXPECT_EQ(more.substr(0, 22) + more.substr(37), "MD0000000101000;9|99b|TM2;5|03S||");
  const std::string body = corrupted("endless-body", 1000);
  EXPECT_EQ(body.rfind("TM2;5|03S|", 0), 0u);
  EXPECT_EQ(body.find("||"), std::string::npos);
  EXPECT_GE(body.size(), 1010u);
}

// Catches: another number of readings than the value says, a target that is not respected, a scan
// that was cut short and counts as sent.
TEST_F(SimFaults, AffectTheirTarget) {
  for (const auto& [readings, bytes] : {std::pair(-1, -3), std::pair(30, 90 + 2)}) {
    host.sensor.setFault(F::WRONG_COUNT, readings, "scan", 1);
    EXPECT_EQ(host.ask("MD0100014901002"), "MD0100014901002\n00P\n\n");
    const auto size = static_cast<int>(host.readRecord().size());
    EXPECT_EQ(size, static_cast<int>(host.readRecord().size()) + bytes);
  }
  host.sensor.setFault(F::CUT_SHORT, 20, "MD0100010001000", 1);
  host.ask("MD0100010001002");
  host.readUntil("MD0100010001000\n99b\n");
  EXPECT_EQ(host.readAll(), "");
  EXPECT_EQ(host.sensor.getSentScans().size(), 5u);
}

// Catches: a timing fault that changes the bytes or takes no time.
TEST_F(SimFaults, TakeTime) {
  host.sensor.setFault(F::SPLIT_PAUSE, 60);
  for (const auto& [fault, value, milliseconds] :
       {std::tuple(F::LATE, 60, 120), std::tuple(F::SPLIT, 4, 120),
        std::tuple(F::BYTE_BY_BYTE, 5000, 100), std::tuple(F::BURSTS, 60, 60)}) {
    host.sensor.setFault(fault, value);
    const auto before = std::chrono::steady_clock::now();
    EXPECT_EQ(host.ask("TM2;5") + host.ask("TM2;5"), CLEAN + CLEAN);
    EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(milliseconds));
    host.sensor.clearFault(fault);
  }
}
