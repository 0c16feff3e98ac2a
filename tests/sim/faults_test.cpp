#include <algorithm>

#include "tests/sim/cRawHost.h"

namespace {

const std::string CLEAN = "TM2;5\n03S\n\n";  // the answer to "TM2;5"

class SimFaults : public testing::Test {
 protected:
  /// What becomes of the answer.
  std::string spoiled(eSimFault fault, int value) {
    sensor.setFault(fault, value, "TM2", 1);
    host.write("TM2;5\n");
    return host.readAll();
  }

  cSimSensor sensor{cSimSetting()};
  cRawHost host{sensor.getPath()};
};

}  // namespace

// Catches: a content fault that does nothing, something else, or does not end after its count.
TEST_F(SimFaults, SpoilARecord) {
  struct cRow {
    eSimFault fault;
    int value;
    std::string bytes;
  };
  const cRow rows[] = {{eSimFault::FLIPPED_BIT, 8, "TL2;5\n03S\n\n"},
                       {eSimFault::WRONG_SUM, 0, "TM2;5\n03T\n\n"},
                       {eSimFault::CUT_SHORT, 8, "TM2;5\n03"},
                       {eSimFault::LOST_LINE_FEED, 2, "TM2;5\n03S\n"},
                       {eSimFault::LOST_LINE, -1, "TM2;5\n\n"},
                       {eSimFault::LOST_END, 0, "TM2;5\n03S\n"},
                       {eSimFault::DOUBLED_LINE, 1, "TM2;5\n03S\n03S\n\n"},
                       {eSimFault::SWAPPED_LINES, 0, "03S\nTM2;5\n\n"},
                       {eSimFault::EMPTY_STATUS, 0, "TM2;5\n\n\n"},
                       {eSimFault::CR_LF, 0, "TM2;5\r\n03S\r\n\r\n"},
                       {eSimFault::STATUS, simStatus("0I"), "TM2;5\n0Ii\n\n"},
                       {eSimFault::STATUS, 98, "TM2;5\n98a\n\n"},
                       {eSimFault::OTHER_ECHO, 0, "XX2;5\n03S\n\n"},
                       {eSimFault::OTHER_TAG, -1, "TM2;4\n03S\n\n"},
                       {eSimFault::ENDLESS_LINE, 5, "ooooo"},
                       {eSimFault::NO_ANSWER, 0, ""}};
  for (const cRow& row : rows) {
    EXPECT_EQ(spoiled(row.fault, row.value), row.bytes) << static_cast<int>(row.fault);
    EXPECT_EQ(host.ask("TM2;5"), CLEAN);
  }
}

// Catches: random damage that is of another size, or lies outside the record.
TEST_F(SimFaults, SpoilAtRandom) {
  EXPECT_EQ(spoiled(eSimFault::GARBAGE, 40).substr(40), CLEAN);
  EXPECT_EQ(spoiled(eSimFault::LOST_BYTES, 3).size(), CLEAN.size() - 3);
  const std::string forced = spoiled(eSimFault::FORCED_BYTE, 0xFF);
  EXPECT_EQ(std::count(forced.begin(), forced.end(), '\xFF'), 1);
  const std::string more = spoiled(eSimFault::UNSOLICITED, 9);
  EXPECT_EQ(more.rfind("MD0000000101000;9\n99b\n", 0), 0u);
  EXPECT_EQ(more.substr(more.size() - CLEAN.size()), CLEAN);
  const std::string body = spoiled(eSimFault::ENDLESS_BODY, 1000);
  EXPECT_EQ(body.rfind("TM2;5\n03S\n", 0), 0u);
  EXPECT_EQ(body.find("\n\n"), std::string::npos);
  EXPECT_GE(body.size(), 1010u);
}

// Catches: another number of readings than told, and aims that miss.
TEST_F(SimFaults, AimAtScans) {
  for (const auto& [readings, bytes] : {std::pair(-1, -3), std::pair(30, 90 + 2)}) {
    sensor.setFault(eSimFault::WRONG_COUNT, readings, "scan", 1);
    EXPECT_EQ(host.ask("MD0100014901002"), "MD0100014901002\n00P\n\n");
    const auto size = static_cast<int>(host.readRecord().size());
    EXPECT_EQ(size, static_cast<int>(host.readRecord().size()) + bytes);
  }
}

// Catches: a timing fault that changes the bytes or takes no time.
TEST_F(SimFaults, TakeTime) {
  sensor.setFault(eSimFault::SPLIT_PAUSE, 60);
  for (const auto& [fault, value, milliseconds] :
       {std::tuple(eSimFault::LATE, 60, 60), std::tuple(eSimFault::SPLIT, 4, 60),
        std::tuple(eSimFault::BYTE_BY_BYTE, 5000, 50), std::tuple(eSimFault::BURSTS, 30, 0)}) {
    sensor.setFault(fault, value);
    const auto before = std::chrono::steady_clock::now();
    EXPECT_EQ(host.ask("TM2;5"), CLEAN);
    EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(milliseconds));
    sensor.clearFault(fault);
  }
}
