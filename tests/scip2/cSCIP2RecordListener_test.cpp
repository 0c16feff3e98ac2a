#include "tarvolink/scip2/cSCIP2RecordListener.h"

#include <gtest/gtest.h>

#include <thread>

#include "tests/scip2/cCommRig.h"
#include "tests/support/cCaseName.h"

namespace {

boost::shared_ptr<cSCIPRecord> makeRecord(const std::string& echo) {
  boost::shared_ptr<cSCIPRecord> record(new cSCIPRecord);
  record->echo = echo;
  return record;
}

struct cEcho {
  const char* name;
  const char* echo;
  const char* command;
  bool isTaken;
};

class ListenerMatch : public testing::TestWithParam<cEcho> {};

TEST_P(ListenerMatch, goesByTagOrElseByTwoLetters) {
  cSCIP2RecordListener listener;
  listener.resetResponse(GetParam().command, 7, 1);
  EXPECT_EQ(listener.push(makeRecord(GetParam().echo)), GetParam().isTaken);
  EXPECT_EQ(listener.hasRecords(), GetParam().isTaken);
  EXPECT_EQ(listener.isComplete(), GetParam().isTaken);
}

INSTANTIATE_TEST_SUITE_P(
    Listener, ListenerMatch,
    testing::Values(cEcho{"own", "BM;7", "BM", true}, cEcho{"other", "BM;8", "BM", false},
                    cEcho{"otherLetters", "QT;7", "BM", true},
                    cEcho{"blankBefore", "BM; 7", "BM", true},
                    cEcho{"textBehind", "BM;7x", "BM", true},
                    cEcho{"secondSemicolon", "BM;host;7", "BM", false},
                    cEcho{"hugeTag", "BM;4294967303", "BM", false},
                    cEcho{"noNumber", "BM;", "BM", false}, cEcho{"untagged", "BM", "BM", true},
                    cEcho{"longer", "MD0044072501000", "MD0000", true},
                    cEcho{"otherUntagged", "QT", "BM", false}, cEcho{"shorter", "B", "BM", false},
                    cEcho{"bothShort", "V", "V", true}, cEcho{"empty", "", "BM", false}),
    cCaseName());

// Would catch a wait that ends early, with nothing, for a signal that an earlier record left.
TEST(Listener, waitsItsWholeTimeForARecord) {
  constexpr int OVER = std::numeric_limits<int>::min();
  cSCIP2RecordListener listener;
  listener.resetResponse("MD", 1, -1);
  listener.push(makeRecord("MD;1"));
  EXPECT_EQ(takeEcho(&listener, 0), "MD;1");
  EXPECT_GE(measure([&] { EXPECT_FALSE(listener.waitRecord(60)); }), 60);
  listener.push(makeRecord("MD0;1"));
  listener.push(makeRecord("MD1;1"));
  listener.resetResponse("QT", 2, 1);
  EXPECT_EQ(takeEcho(&listener), "MD0;1") << "a reset keeps what is untaken";
  EXPECT_EQ(takeEcho(&listener, OVER), "MD1;1");
  EXPECT_FALSE(listener.waitRecord(OVER));
}

// The signal is binary, and a reuse of the listener clears it: would catch a waiter that sleeps
// on beside its record.
TEST(Listener, wakesAWaiterForEachRecordThoughItIsReusedMeanwhile) {
  for (int round = 0; round < 20; ++round) {
    cSCIP2RecordListener listener;
    listener.resetResponse("MD", 1, -1);
    std::thread waiters[2];
    for (auto& waiter : waiters) {
      waiter = std::thread([&] { EXPECT_TRUE(listener.waitRecord(PATIENCE)); });
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(2));  // for the fault to show
    const long elapsed = measure([&] {
      listener.push(makeRecord("MD;1"));
      listener.push(makeRecord("MD;1"));
      if (round % 2 == 0) listener.resetResponse("PP", 2, 1);
      for (auto& waiter : waiters) waiter.join();
    });
    ASSERT_LT(elapsed, PATIENCE);
  }
}

}  // namespace
