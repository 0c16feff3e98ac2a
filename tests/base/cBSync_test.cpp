#include "tarvolink/base/cBSync.h"

#include <gtest/gtest.h>

#include <atomic>
#include <boost/thread/thread.hpp>
#include <chrono>
#include <functional>
#include <limits>
#include <memory>
#include <thread>

#include "tests/support/cCaseName.h"

namespace {

using kavTBX::cBSync;

constexpr int PATIENCE = 8000;  // milliseconds

long elapsedSince(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() -
                                                               start)
      .count();
}

TEST(BSync, keepsOneSignalUntilItIsTaken) {
  cBSync sync;
  sync.unblock();
  sync.unblock();
  EXPECT_TRUE(sync.wait_and_reset(PATIENCE)) << "one raised before the wait is not lost";
  EXPECT_FALSE(sync.wait_and_reset(0)) << "two do not count up";
  sync.unblock();
  sync.wait();
  sync.wait_and_reset();
  EXPECT_FALSE(sync.wait_and_reset(0));
  sync.unblock();
  sync.reset();
  EXPECT_FALSE(sync.wait_and_reset(0));
}

// Would catch a wait in the wrong unit, and one that a negative time makes endless.
TEST(BSync, waitsAsLongAsTold) {
  cBSync sync;
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(sync.wait_and_reset(100));
  EXPECT_GE(elapsedSince(start), 100);
  for (const int over : {-1, std::numeric_limits<int>::min()}) {
    EXPECT_FALSE(sync.wait_and_reset(over));
    sync.unblock();
    EXPECT_TRUE(sync.wait_and_reset(over));
  }
  std::thread raiser([&sync] { sync.unblock(); });
  EXPECT_TRUE(sync.wait_and_reset(std::numeric_limits<int>::max()));
  raiser.join();
  EXPECT_LT(elapsedSince(start), PATIENCE);
}

/// Does the three waits on a new signal each time.
struct cWait {
  const char* name;
  std::function<void(cBSync&)> wait;
};

const cWait WAITS[] = {{"wait", [](cBSync& sync) { sync.wait(); }},
                       {"waitAndReset", [](cBSync& sync) { sync.wait_and_reset(); }},
                       {"timed", [](cBSync& sync) { sync.wait_and_reset(PATIENCE); }}};

class BSyncWait : public testing::TestWithParam<cWait> {};

// A request's signal lives on its caller's stack: would catch `unblock` touching it once its
// waiter is gone (under the sanitizers).
TEST_P(BSyncWait, mayDestroyTheSignalWhenItReturns) {
  constexpr int ROUNDS = 300;
  std::atomic<cBSync*> raised{nullptr};
  std::thread raiser([&raised] {
    for (int round = 0; round < ROUNDS; ++round) {
      cBSync* sync = nullptr;
      while ((sync = raised.exchange(nullptr)) == nullptr) std::this_thread::yield();
      sync->unblock();
    }
  });
  for (int round = 0; round < ROUNDS; ++round) {
    const auto sync = std::make_unique<cBSync>();
    raised = sync.get();
    GetParam().wait(*sync);
  }
  raiser.join();
}

// Would catch a host's interrupted thread leaving a request behind that the worker still uses.
TEST_P(BSyncWait, isNotLeftByAnInterruptedThread) {
  cBSync start, sync;
  std::atomic<bool> isRaised{false};
  bool hasWaited = false;
  boost::thread waiter([&] {
    start.wait();
    GetParam().wait(sync);
    hasWaited = isRaised;
  });
  waiter.interrupt();
  start.unblock();
  std::this_thread::sleep_for(std::chrono::milliseconds(20));  // for a fault to show
  waiter.interrupt();
  isRaised = true;
  sync.unblock();
  waiter.join();
  EXPECT_TRUE(hasWaited);
}

INSTANTIATE_TEST_SUITE_P(Base, BSyncWait, testing::ValuesIn(WAITS), cCaseName());

}  // namespace
