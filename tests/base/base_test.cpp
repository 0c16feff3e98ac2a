// Signals, workers, and the zone.
#include <gtest/gtest.h>
#include <signal.h>

#include <atomic>
#include <cstdlib>
#include <functional>
#include <limits>
#include <memory>
#include <stdexcept>
#include <thread>

#include "tarvolink/base/cBSync.h"
#include "tarvolink/base/cThread.h"
#include "tarvolink/base/cTimezoneInfo.h"
#include "tests/base/measure.h"

namespace {

using kavTBX::cBSync;

// Would catch a signal that is lost before its wait, or counts up; a wait in the wrong unit, and
// one that a time below zero or beyond the clock makes endless or short.
TEST(BSync, keepsOneSignalAndWaitsAsLongAsTold) {
  using tLimits = std::numeric_limits<int>;
  cBSync sync;
  sync.unblock();
  sync.unblock();
  EXPECT_TRUE(sync.wait_and_reset(PATIENCE));
  EXPECT_GE(measure([&] { EXPECT_FALSE(sync.wait_and_reset(100)); }), 100);
  sync.unblock();
  EXPECT_TRUE(sync.wait_and_reset(tLimits::min()));
  sync.unblock();
  sync.reset();
  EXPECT_FALSE(sync.wait_and_reset(tLimits::min()));
  std::thread raiser([&sync] { sync.unblock(); });
  EXPECT_TRUE(sync.wait_and_reset(tLimits::max()));
  raiser.join();
}

// A request's signal lives on its caller's stack: would catch `unblock` touching it once its waiter
// is gone (under the sanitizers), and a host's interrupted thread leaving it to the worker.
TEST(BSync, waitEndsWithTheSignalOnlyAndMayThenDestroyIt) {
  using tWait = void (*)(cBSync&);
  for (const tWait wait : {tWait([](cBSync& sync) { sync.wait(); }),
                           tWait([](cBSync& sync) { sync.wait_and_reset(); }),
                           tWait([](cBSync& sync) { sync.wait_and_reset(PATIENCE); })}) {
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
      wait(*sync);
    }
    raiser.join();
    cBSync sync;
    boost::thread waiter([&sync, wait] { wait(sync); });
    waiter.interrupt();
    EXPECT_FALSE(waiter.try_join_for(boost::chrono::milliseconds(50)));
    sync.unblock();
    waiter.join();
  }
}

/// A worker whose hooks count their calls and do what a test tells them.
class cWorker : public kavTBX::cThread {
 public:
  ~cWorker() override { finalize(); }

  using kavTBX::cThread::isFinishing;

  std::atomic<int> inits{0};
  std::atomic<int> passes{0};
  cBSync passed;    // raised by every pass
  cBSync released;  // what each pass waits for
  std::function<void()> init = [] {};
  std::function<void()> work = [this] { released.wait_and_reset(); };

 protected:
  void threadInit() override {
    init();
    ++inits;
  }
  void threadFunc() override {
    ++passes;
    passed.unblock();
    work();
  }
  void threadFinReq() override { released.unblock(); }
};

// Would catch a second worker on the same queue, or one that comes back after its end.
TEST(Thread, runsOneWorkerUntilItIsStoppedForGood) {
  cWorker worker;
  worker.run();
  worker.run();
  for (int pass = 1; pass <= 3; ++pass) {
    ASSERT_TRUE(worker.passed.wait_and_reset(PATIENCE));
    EXPECT_EQ(worker.passes, pass) << "called again whenever it returns";
    if (pass < 3) worker.released.unblock();
  }
  worker.finalize();
  worker.finalize();
  worker.run();
  EXPECT_EQ(worker.inits, 1);
  EXPECT_EQ(worker.passes, 3);
  cWorker stoppedFirst;
  stoppedFirst.finalize();
  stoppedFirst.run();
  EXPECT_EQ(stoppedFirst.inits, 0);
}

// Would catch a host that is ended by std::terminate, or waits for ever in run.
TEST(Thread, anExceptionEndsTheWorkerOnly) {
  cWorker inInit;
  inInit.init = [] { throw std::runtime_error("init"); };
  inInit.run();
  EXPECT_EQ(inInit.passes, 0);
  EXPECT_TRUE(inInit.isFinishing());
  cWorker inWork;
  inWork.work = [] { throw 1; };
  inWork.run();
  ASSERT_TRUE(inWork.passed.wait_and_reset(PATIENCE));
  inWork.finalize();
  EXPECT_EQ(inWork.passes, 1);
}

// Would catch a host's signal handler running in the worker, or SIGINT never reaching the host;
// a host's crash handler that sees no faults of the worker's own.
TEST(Thread, blocksSignalsInTheWorkerOnly) {
  sigset_t before, during, after;
  pthread_sigmask(SIG_SETMASK, nullptr, &before);
  cWorker worker;
  worker.init = [&during] { pthread_sigmask(SIG_SETMASK, nullptr, &during); };
  worker.run();
  pthread_sigmask(SIG_SETMASK, nullptr, &after);
  for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGUSR1, SIGALRM, SIGABRT, SIGSEGV}) {
    EXPECT_EQ(sigismember(&during, number), number == SIGABRT || number == SIGSEGV ? 0 : 1);
    EXPECT_EQ(sigismember(&before, number), sigismember(&after, number));
  }
}

// Would catch a caller that talks to a worker not ready, or destroys one that still runs.
TEST(Thread, runAndFinalizeReturnWhenTheyAreDoneAlsoToAnInterruptedThread) {
  cBSync proceed;
  cWorker worker;
  worker.init = worker.work = [&proceed] { proceed.wait_and_reset(); };
  for (const auto step : {&kavTBX::cThread::run, &kavTBX::cThread::finalize}) {
    boost::thread host([&] { (worker.*step)(); });
    host.interrupt();
    EXPECT_FALSE(host.try_join_for(boost::chrono::milliseconds(50)));
    proceed.unblock();
    host.join();
  }
}

using boost::posix_time::time_duration;

struct cZone {
  const char* zone;  // as tzset(3) takes it
  time_duration offset;
  int hours;
};

[[noreturn]] void compare(const cZone& expected) {
  setenv("TZ", expected.zone, 1);
  tzset();
  const auto info = kavTBX::cTimezones::instance();
  std::_Exit(info->utcOffset == expected.offset && info->utcOffsetHours == expected.hours ? 0 : 1);
}

// In a child each: the zone is asked for once in a process. Would catch the offset of today, or of
// another half of the year, and hours that are rounded.
TEST(TimezoneDeathTest, isTheOffsetAtTheEpoch) {
  for (const cZone& zone : {cZone{"<-0330>3:30", -time_duration(3, 30, 0), -3},
                            cZone{"CET-1CEST,M3.5.0,M10.5.0/3", time_duration(1, 0, 0), 1},
                            cZone{"NZST-12NZDT,M9.5.0,M4.1.0/3", time_duration(13, 0, 0), 13}}) {
    EXPECT_EXIT(compare(zone), testing::ExitedWithCode(0), "") << zone.zone;
  }
}

}  // namespace
