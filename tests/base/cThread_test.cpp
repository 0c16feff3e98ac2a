#include "tarvolink/base/cThread.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <atomic>
#include <functional>
#include <stdexcept>

#include "tarvolink/base/cBSync.h"
#include "tests/base/measure.h"

namespace {

/// A worker whose hooks count their calls and do what a test tells them.
class cWorker : public kavTBX::cThread {
 public:
  ~cWorker() override { finalize(); }

  std::atomic<int> inits{0};
  std::atomic<int> passes{0};
  std::atomic<int> requests{0};
  kavTBX::cBSync passed;    // raised by every pass
  kavTBX::cBSync released;  // what each pass waits for
  std::function<void()> init = [] {};
  std::function<void()> work = [this] { released.wait_and_reset(); };

  using kavTBX::cThread::isFinishing;
  using kavTBX::cThread::wasStarted;

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
  void threadFinReq() override {
    ++requests;
    released.unblock();
  }
};

// Would catch a second worker on the same queue.
TEST(Thread, runsOneWorkerUntilItIsStoppedForGood) {
  cWorker worker;
  EXPECT_FALSE(worker.wasStarted());
  worker.run();
  worker.run();
  EXPECT_TRUE(worker.wasStarted());
  for (int pass = 1; pass <= 3; ++pass) {
    ASSERT_TRUE(worker.passed.wait_and_reset(PATIENCE));
    EXPECT_EQ(worker.passes, pass) << "called again whenever it returns";
    worker.released.unblock();
  }
  ASSERT_TRUE(worker.passed.wait_and_reset(PATIENCE));
  worker.finalize();
  EXPECT_EQ(worker.requests, 1);
  worker.finalize();
  worker.run();
  EXPECT_EQ(worker.inits, 1);
  EXPECT_EQ(worker.passes, 4);
  cWorker stoppedFirst;
  stoppedFirst.finalize();
  stoppedFirst.run();
  EXPECT_FALSE(stoppedFirst.wasStarted());
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

// Would catch a host's signal handler running in the worker, or SIGINT never reaching the host.
TEST(Thread, blocksSignalsInTheWorkerOnly) {
  sigset_t before, during, after;
  pthread_sigmask(SIG_SETMASK, nullptr, &before);
  cWorker worker;
  worker.init = [&during] { pthread_sigmask(SIG_SETMASK, nullptr, &during); };
  worker.run();
  pthread_sigmask(SIG_SETMASK, nullptr, &after);
  for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGUSR1, SIGALRM, SIGCHLD}) {
    EXPECT_EQ(sigismember(&during, number), 1);
    EXPECT_EQ(sigismember(&before, number), sigismember(&after, number));
  }
  for (const int fault : {SIGABRT, SIGSEGV}) {  // its own: a host's crash handler is to see them
    EXPECT_EQ(sigismember(&during, fault), 0);
  }
}

// Would catch a caller that talks to a worker not ready, or destroys one that still runs.
TEST(Thread, runAndFinalizeReturnWhenTheyAreDoneAlsoToAnInterruptedThread) {
  kavTBX::cBSync proceed;
  cWorker worker;
  worker.init = worker.work = [&proceed] { proceed.wait_and_reset(); };
  for (const auto step : {&kavTBX::cThread::run, &kavTBX::cThread::finalize}) {
    boost::thread host([&] { (worker.*step)(); });
    host.interrupt();
    EXPECT_FALSE(host.try_join_for(boost::chrono::milliseconds(50)));
    proceed.unblock();
    host.join();
  }
  EXPECT_EQ(worker.inits, 1);
}

/// Ends by itself, and its class stops nothing.
struct cUnstopped : kavTBX::cThread {
  explicit cUnstopped(bool& givenEnd) : end(givenEnd) {}

  void threadInit() override {}
  void threadFunc() override {
    bool& hasEnded = end;
    setFinishing();
    entered.unblock();
    kavTBX::cBSync().wait_and_reset(50);  // for a fault to show
    hasEnded = true;
  }
  void threadFinReq() override {}

  kavTBX::cBSync entered;
  bool& end;
};

TEST(Thread, isJoinedByItsDestructor) {
  bool hasEnded = false;
  {
    cUnstopped thread(hasEnded);
    thread.run();
    thread.entered.wait();  // there is nothing to call in what is half destroyed
  }
  EXPECT_TRUE(hasEnded);
}

}  // namespace
