#include "tarvolink/base/cBSync.h"

#include <gtest/gtest.h>

#include <atomic>
#include <boost/thread/thread.hpp>
#include <limits>
#include <memory>
#include <thread>

#include "tests/base/measure.h"

namespace {

using kavTBX::cBSync;

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
  EXPECT_GE(measure([&] { EXPECT_FALSE(sync.wait_and_reset(100)); }), 100);
  for (const int over : {-1, std::numeric_limits<int>::min()}) {
    EXPECT_FALSE(sync.wait_and_reset(over));
    sync.unblock();
    EXPECT_TRUE(sync.wait_and_reset(over));
  }
  std::thread raiser([&sync] { sync.unblock(); });
  EXPECT_TRUE(sync.wait_and_reset(std::numeric_limits<int>::max()));
  raiser.join();
}

class BSyncWait : public testing::TestWithParam<void (*)(cBSync&)> {};

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
    GetParam()(*sync);
  }
  raiser.join();
}

// Would catch a host's interrupted thread leaving a request behind that the worker still uses.
TEST_P(BSyncWait, isNotLeftByAnInterruptedThread) {
  cBSync sync;
  boost::thread waiter([&sync] { GetParam()(sync); });
  waiter.interrupt();
  EXPECT_FALSE(waiter.try_join_for(boost::chrono::milliseconds(50)));
  sync.unblock();
  waiter.join();
}

INSTANTIATE_TEST_SUITE_P(Base, BSyncWait,
                         testing::Values([](cBSync& sync) { sync.wait(); },
                                         [](cBSync& sync) { sync.wait_and_reset(); },
                                         [](cBSync& sync) { sync.wait_and_reset(PATIENCE); }));

}  // namespace
