#include "tarvolink/base/cThread.h"

#include <pthread.h>
#include <signal.h>

namespace kavTBX {

namespace {

// Signals that a thread's own fault raises. Blocked, they would bypass a host's handlers: abort(3)
// of glibc 2.41 no longer unblocks SIGABRT before raising it.
constexpr int OWN_FAULTS[] = {SIGABRT, SIGBUS, SIGFPE, SIGILL, SIGSEGV, SIGSYS, SIGTRAP};

/// Blocks all other signals in the calling thread for its lifetime; a thread made during that
/// time inherits the mask (pthread_create).
class cSignalsBlocked {
 public:
  cSignalsBlocked() {
    sigset_t others;
    sigfillset(&others);
    for (const int fault : OWN_FAULTS) sigdelset(&others, fault);
    pthread_sigmask(SIG_BLOCK, &others, &before);
  }
  ~cSignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before, nullptr); }
  cSignalsBlocked(const cSignalsBlocked&) = delete;
  cSignalsBlocked& operator=(const cSignalsBlocked&) = delete;

 private:
  sigset_t before;
};

}  // namespace

// Joining throws only in the worker itself, where destroying it is a programming error.
// NOLINTNEXTLINE(bugprone-exception-escape)
cThread::~cThread() {
  join();
  delete thread;
}

void cThread::run() {
  boost::this_thread::disable_interruption uninterrupted;
  boost::mutex::scoped_lock one(threadMutex);
  if (thread != nullptr || isFinishing()) return;
  start();
  boost::mutex::scoped_lock lock(flagMutex);
  while (!initialised) condition.wait(lock);
}

void cThread::start() {
  // Blocked before the thread exists: blocking in the thread itself would leave a gap at its start.
  const cSignalsBlocked inherited;
  thread = new boost::thread([this] { work(); });
}

void cThread::finalize() {
  setFinishing();
  threadFinReq();
  join();
}

void cThread::join() {
  boost::this_thread::disable_interruption uninterrupted;
  boost::mutex::scoped_lock one(threadMutex);
  if (thread != nullptr && thread->joinable()) thread->join();
}

bool cThread::isFinishing() {
  boost::mutex::scoped_lock lock(flagMutex);
  return finishing;
}

void cThread::setFinishing() {
  boost::mutex::scoped_lock lock(flagMutex);
  finishing = true;
}

bool cThread::wasStarted() {
  boost::mutex::scoped_lock one(threadMutex);
  return thread != nullptr;
}

void cThread::work() {
  try {
    threadInit();
    announceInitialised();
    do {
      threadFunc();
    } while (!isFinishing());
  } catch (...) {
    // Out of a thread an exception would end the host; `run` must not wait for `threadInit` either.
    setFinishing();
    announceInitialised();
  }
}

void cThread::announceInitialised() {
  boost::mutex::scoped_lock lock(flagMutex);
  initialised = true;
  condition.notify_all();
}

}  // namespace kavTBX
