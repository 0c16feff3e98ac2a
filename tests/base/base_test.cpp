// Signals, workers, and the zone.
#include <gtest/gtest.h>
#include <signal.h>

#include <atomic>
#include <boost/date_time/posix_time/posix_time.hpp>
#include <cstdlib>
#include <iostream>
#include <limits>
#include <memory>
#include <stdexcept>

#include "tarvolink/base/cBSync.h"
#include "tarvolink/base/cThread.h"
#include "tarvolink/base/cTimezoneInfo.h"
#include "tests/support/waiting.h"

namespace {

using kavTBX::cBSync;

// Catches: a signal that is lost before its wait, or counts up; a wait in the wrong unit, or one
// that a time below zero or beyond the clock makes endless or short.
TEST(BSync, KeepsOneSignalAndWaitsForTheGivenTime) {
  using tLimits = std::numeric_limits<int>;
  cBSync sync;
  sync.unblock();
  sync.unblock();
  EXPECT_TRUE(sync.wait_and_reset(LONG));
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

// Catches: a host's interrupted thread that leaves before its signal, which the worker then raises
// on a stack that is gone.
TEST(BSync, EndsAWaitByItsSignalOnly) {
  using tWait = void (*)(cBSync&);
  for (const tWait wait : {tWait([](cBSync& sync) { sync.wait(); }),
                           tWait([](cBSync& sync) { sync.wait_and_reset(); }),
                           tWait([](cBSync& sync) { sync.wait_and_reset(LONG); })}) {
    cBSync sync;
    boost::thread waiter([&sync, wait] { wait(sync); });
    waiter.interrupt();
    EXPECT_FALSE(waiter.try_join_for(boost::chrono::milliseconds(50)));
    sync.unblock();
    waiter.join();
  }
}

/// A worker whose hooks count their calls and do what a test sets.
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

// Catches: a second worker on the same queue, or one that comes back after its end.
TEST(Thread, RunsOneWorkerUntilItIsStoppedForGood) {
  cWorker worker;
  worker.run();
  worker.run();
  for (int pass = 1; pass <= 3; ++pass) {
    ASSERT_TRUE(worker.passed.wait_and_reset(LONG));
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

// Catches: a host that is ended by std::terminate, or waits for ever in run.
TEST(Thread, EndsAloneByAnException) {
  cWorker inInit;
  inInit.init = [] { throw std::runtime_error("init"); };
  inInit.run();
  EXPECT_EQ(inInit.passes, 0);
  EXPECT_TRUE(inInit.isFinishing());
  cWorker inWork;
  inWork.work = [] { throw 1; };
  inWork.run();
  ASSERT_TRUE(inWork.passed.wait_and_reset(LONG));
  inWork.finalize();
  EXPECT_EQ(inWork.passes, 1);
}

// Catches: a host's signal handler running in the worker, or SIGINT never reaching the host;
// a host's crash handler that sees no faults of the worker's own.
TEST(Thread, BlocksSignalsInTheWorkerOnly) {
  sigset_t none, during, after;
  sigemptyset(&none);
  pthread_sigmask(SIG_SETMASK, &none, nullptr);
  cWorker worker;
  worker.init = [&during] { pthread_sigmask(SIG_SETMASK, nullptr, &during); };
  worker.run();
  pthread_sigmask(SIG_SETMASK, nullptr, &after);
  for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGUSR1, SIGALRM, SIGABRT, SIGSEGV}) {
    EXPECT_EQ(sigismember(&during, number), number == SIGABRT || number == SIGSEGV ? 0 : 1);
    EXPECT_EQ(sigismember(&after, number), 0);
  }
}

// In a child each: the zone is asked for once in a process.
// Catches: the offset of today, or of another half of the year, and hours that are rounded.
TEST(TimezoneDeathTest, IsTheOffsetAtTheEpoch) {
  for (const auto& [zone, offset] : {std::pair("<-0330>3:30", "-03:30:00 -3"),  // as of tzset(3)
                                     std::pair("CET-1CEST,M3.5.0,M10.5.0/3", "01:00:00 1"),
                                     std::pair("NZST-12NZDT,M9.5.0,M4.1.0/3", "13:00:00 13")}) {
    const auto print = [](const char* name) {
      setenv("TZ", name, 1);
      tzset();
      const auto info = kavTBX::cTimezones::instance();
      std::cerr << info->utcOffset << ' ' << info->utcOffsetHours;
      std::_Exit(0);
    };
    EXPECT_EXIT(print(zone), testing::ExitedWithCode(0), std::string("^") + offset + "$");
  }
}

}  // namespace
