#include "tarvolink/scip2/cSCIP2RecordListener.h"

#include <gtest/gtest.h>

#include "tests/scip2/cCommRig.h"

namespace {

boost::shared_ptr<cSCIPRecord> makeRecord(const std::string& echo) {
  boost::shared_ptr<cSCIPRecord> record(new cSCIPRecord);
  record->echo = echo;
  return record;
}

// Would catch an answer to another command taken, or its own refused.
TEST(Listener, goesByTagOrElseByTwoLetters) {
  struct cRow {
    const char* echo;
    const char* command;
    bool isTaken;
  };
  for (const auto& [echo, command, isTaken] :
       {cRow{"BM;7", "BM", true}, cRow{"BM;8", "BM", false}, cRow{"QT;7", "BM", true},
        cRow{"BM; 7", "BM", true}, cRow{"BM;7x", "BM", true}, cRow{"BM;host;7", "BM", false},
        cRow{"BM;4294967303", "BM", false}, cRow{"BM;", "BM", false}, cRow{"BM", "BM", true},
        cRow{"MD0044072501000", "MD0000", true}, cRow{"QT", "BM", false}, cRow{"B", "BM", false},
        cRow{"V", "V", true}, cRow{"", "BM", false}}) {
    cSCIP2RecordListener listener;
    listener.resetResponse(command, 7, 1);
    EXPECT_EQ(listener.push(makeRecord(echo)), isTaken) << echo;
    EXPECT_EQ(listener.hasRecords(), isTaken) << echo;
    EXPECT_EQ(listener.isComplete(), isTaken) << echo;
  }
}

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
