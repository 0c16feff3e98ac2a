#include "tools/cStop.h"

#include <pthread.h>
#include <unistd.h>

#include "tools/cFailure.h"

namespace tool {

namespace {

sigset_t handledSignals() {
  sigset_t handled;
  sigemptyset(&handled);
  for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction action;
    sigaction(number, nullptr, &action);
    if (action.sa_handler != SIG_IGN || number == SIGTERM) sigaddset(&handled, number);
  }
  return handled;
}

}  // namespace

cStop::cStop() : signals(handledSignals()) {
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  watcher = std::thread(&cStop::watch, this);
}

cStop::~cStop() {
  {
    const std::lock_guard<std::mutex> lock(mutex);
    finished = true;
    changed.notify_all();
  }
  pthread_kill(watcher.native_handle(), SIGTERM);
  watcher.join();
}

void cStop::wait() {
  std::unique_lock<std::mutex> lock(mutex);
  changed.wait(lock, [this] { return isRequested(); });
}

void cStop::watch() {
  siginfo_t signal;
  while (sigwaitinfo(&signals, &signal) < 0 || !isForUs(signal)) {
  }
  if (atOnce) _exit(static_cast<int>(eExit::SUCCESS));
  endWithinGrace();
}

bool cStop::isForUs(const siginfo_t& signal) const {
  // Giving back a controlling terminal (TIOCNOTTY) sends a hang-up from this very process.
  return signal.si_signo != SIGHUP || signal.si_code != SI_USER || signal.si_pid != getpid();
}

void cStop::endWithinGrace() {
  std::unique_lock<std::mutex> lock(mutex);
  requested = true;
  changed.notify_all();
  if (!changed.wait_for(lock, GRACE, [this] { return finished; })) {
    _exit(static_cast<int>(eExit::SUCCESS));
  }
}

}  // namespace tool
