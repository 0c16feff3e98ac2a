#include <gtest/gtest.h>

#include "sim/cSimCode.h"
#include "sim/cSimModel.h"
#include "sim/cSimOutbox.h"
#include "sim/cSimTurn.h"
#include "sim/cSimWorld.h"
#include "sim/tarvosim.h"

// Catches: a sum or number written otherwise than sensors write it.
TEST(SimCode, WritesSumsAndNumbers) {
  EXPECT_EQ(cSimCode::summed("00"), "00P\n");
  EXPECT_EQ(cSimCode::summed("99"), "99b\n");
  EXPECT_EQ(cSimCode::summed("0E"), "0Ee\n");
  EXPECT_EQ(cSimCode::sum("\xC3\xA4"), cSimCode::sum("g"));  // bytes above 0x7F add up unsigned
  EXPECT_EQ(cSimCode::number(1234, 2), "CB");
  EXPECT_EQ(cSimCode::number(5432, 3), "1Dh");
  EXPECT_EQ(cSimCode::number(16000000, 4), "m2@0");
  EXPECT_EQ(cSimCode::numbers({1234, 4095}, 2), "CBoo");
}

// Catches: a world that changes between runs or with the part of it that is asked for.
TEST(SimWorld, SameSeedAndNumberSameDistances) {
  const cSimModel& model = cSimModel::of(eSimModel::LONG_RANGE);
  const cSimWorld one(model, 40, 7), again(model, 40, 7), other(model, 40, 8);
  const auto scan = one.scan(1000, 0, 1080, 1, INT_MAX);
  EXPECT_EQ(scan, again.scan(1000, 0, 1080, 1, INT_MAX));
  EXPECT_NE(scan, other.scan(1000, 0, 1080, 1, INT_MAX));
  EXPECT_NE(scan, one.scan(1001, 0, 1080, 1, INT_MAX));
  const std::vector<int> part(scan.begin() + 100, scan.begin() + 201);
  EXPECT_EQ(part, one.scan(1000, 100, 200, 0, INT_MAX));
  EXPECT_THROW(one.scan(1, 5, 4, 1, INT_MAX), std::out_of_range);
  EXPECT_THROW(one.scan(1, 0, 1440, 1, INT_MAX), std::out_of_range);
}

// Catches: a world without error values or with distances that the model cannot measure; a cluster
// that hides a valid reading behind an error value, or loses its last partial group.
TEST(SimWorld, ReadingsAreWithinTheModel) {
  for (eSimModel kind : {eSimModel::SHORT_RANGE, eSimModel::MIDDLE_RANGE, eSimModel::LONG_RANGE}) {
    const cSimModel& model = cSimModel::of(kind);
    const cSimWorld world(model, model.rate(), 3);
    const auto scan = world.scan(77, model.first, model.last, 1, INT_MAX);
    int errors = 0, valid = 0;
    for (int value : scan) {
      errors += value >= model.errorFirst && value <= model.errorLast;
      valid += value >= model.near && value <= model.far;
    }
    EXPECT_EQ(errors + valid, model.last - model.first + 1);
    EXPECT_GT(errors, 0);
    EXPECT_GT(valid, errors);

    std::vector<int> groups;
    for (std::size_t i = 0; i < scan.size(); ++i) {
      if (i % 4 == 0) groups.push_back(scan[i]);
      int& kept = groups.back();
      const bool better = scan[i] >= model.near ? kept < model.near || scan[i] < kept
                                                : kept < model.near && scan[i] < kept;
      if (better) kept = scan[i];
    }
    EXPECT_EQ(world.scan(77, model.first, model.last, 4, INT_MAX), groups);
  }
}

// Catches: a person who stands still, or who is not seen at all.
TEST(SimWorld, PersonWalks) {
  const cSimModel& model = cSimModel::of(eSimModel::SHORT_RANGE);
  const cSimWorld world(model, 10, 1);
  const auto before = world.scan(1, 44, 725, 1, INT_MAX);
  const auto after = world.scan(41, 44, 725, 1, INT_MAX);
  int moved = 0;
  for (std::size_t i = 0; i < before.size(); ++i) moved += std::abs(before[i] - after[i]) > 300;
  EXPECT_GT(moved, 30);
}

// Catches: drift of the turning rate, and a change of rate that jumps.
TEST(SimTurn, DoesNotDrift) {
  const cSimTurn::cMoment start{};
  cSimTurn turns(start, 15);
  EXPECT_EQ(turns.endOf(15 * 3600) - start, std::chrono::hours(1));
  EXPECT_EQ(turns.endedAt(start + std::chrono::hours(1)), 54000u);
  EXPECT_EQ(turns.endedAt(start + std::chrono::hours(1) - std::chrono::nanoseconds(1)), 53999u);
  EXPECT_EQ(turns.stampOf(15), 1000u);
  turns.setRate(10, start + std::chrono::milliseconds(1010));
  EXPECT_EQ(turns.stampOf(15), 1000u);
  EXPECT_EQ(turns.stampOf(17), 1200u);
}

namespace {
/// When the pieces of a record leave, in microseconds, with their lengths.
std::vector<std::pair<long, std::size_t>> leaving(int speed, cSimFaults& faults, std::size_t size) {
  cSimOutbox outbox(faults);
  outbox.setSpeed(speed);
  cSimRecord record;
  record.bytes.assign(size, 'x');
  cSimTurn::cMoment now{};
  outbox.push(record, now);
  std::vector<std::pair<long, std::size_t>> pieces;
  for (bool ended = false; !ended; now = ended ? now : outbox.nextAt()) {
    const std::size_t due = outbox.due(now);
    if (due == 0) continue;
    const auto when = std::chrono::duration_cast<std::chrono::microseconds>(now.time_since_epoch());
    pieces.emplace_back(when.count(), due);
    ended = outbox.sent(due, now);
  }
  return pieces;
}
using cPieces = std::vector<std::pair<long, std::size_t>>;
}  // namespace

// Catches: bytes that leave faster or slower than the line, and timing faults that do nothing.
TEST(SimOutbox, PacesBytes) {
  cSimFaults faults;
  EXPECT_EQ(leaving(0, faults, 100), (cPieces{{0, 100}}));
  EXPECT_EQ(leaving(20000, faults, 40), (cPieces{{8000, 16}, {16000, 16}, {20000, 8}}));
  faults.set(eSimFault::SPLIT, 7, "", 0);
  faults.set(eSimFault::SPLIT_PAUSE, 30, "", 0);
  EXPECT_EQ(leaving(0, faults, 100), (cPieces{{0, 7}, {30000, 93}}));
  faults.clearAll();
  faults.set(eSimFault::BYTE_BY_BYTE, 500, "", 1);
  EXPECT_EQ(leaving(0, faults, 3), (cPieces{{0, 1}, {500, 1}, {1000, 1}}));
  faults.set(eSimFault::BURSTS, 16, "", 0);
  EXPECT_EQ(leaving(20000, faults, 40), (cPieces{{16000, 32}, {32000, 8}}));
}

// Catches: a fault that a command line could not name.
TEST(SimFaults, EveryFaultHasAName) {
  const auto& table = simFaultTable();
  ASSERT_EQ(table.size(), static_cast<std::size_t>(eSimFault::UNPLUGGED) + 1);
  for (std::size_t i = 0; i < table.size(); ++i) {
    EXPECT_EQ(static_cast<std::size_t>(table[i].fault), i) << table[i].name;
    EXPECT_EQ(simFaultByName(table[i].name), table[i].fault);
  }
  EXPECT_FALSE(simFaultByName("no-such-fault"));
  EXPECT_THROW(simStatus("0"), std::invalid_argument);
}
