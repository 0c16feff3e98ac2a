#include "tools/cStop.h"

#include <pthread.h>
#include <unistd.h>

#include <utility>

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
  request();
  watcher.join();
}

void cStop::request() {
  // Blocked there and taken by sigwaitinfo, so that it ends nothing by itself.
  pthread_kill(watcher.native_handle(), SIGTERM);  // NOLINT(bugprone-bad-signal-to-kill-thread)
}

void cStop::wait() {
  std::unique_lock<std::mutex> lock(mutex);
  changed.wait(lock, [this] { return isRequested(); });
}

bool cStop::waitFor(std::chrono::milliseconds timeOut) {
  std::unique_lock<std::mutex> lock(mutex);
  return changed.wait_for(lock, timeOut, [this] { return isRequested(); });
}

void cStop::setAtOnce(bool on) {
  const std::lock_guard<std::mutex> lock(mutex);
  atOnce = on;
  changed.notify_all();
}

cStop::cFarewell::cFarewell(cStop& owner, std::function<void()> act) : stop(owner) {
  const std::lock_guard<std::mutex> lock(stop.mutex);
  place = stop.farewells.insert(stop.farewells.begin(), std::move(act));
}

cStop::cFarewell::~cFarewell() {
  const std::lock_guard<std::mutex> lock(stop.mutex);
  stop.farewells.erase(place);
}

void cStop::watch() {
  siginfo_t signal;
  while (sigwaitinfo(&signals, &signal) < 0 || !isForUs(signal)) {
  }
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
  changed.wait_for(lock, GRACE, [this] { return finished || atOnce; });
  if (finished) return;
  for (const auto& act : farewells) act();
  _exit(static_cast<int>(eExit::SUCCESS));
}

}  // namespace tool
