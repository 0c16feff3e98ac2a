#include "tools/cShutdown.h"

#include <pthread.h>
#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <cstdint>
#include <ctime>
#include <system_error>
#include <utility>

#include "tools/cFailure.h"

namespace tool {

namespace {

constexpr std::int64_t SECOND_NS = 1'000'000'000;

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

/// Sent by this process itself. glibc reports a thread's signal as a process's.
bool isOwn(const siginfo_t& signal) {
  const bool isFromProcess = signal.si_code == SI_USER || signal.si_code == SI_TKILL;
  return isFromProcess && signal.si_pid == getpid();
}

}  // namespace

cShutdown::cShutdown() : signals(handledSignals()) {
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  watcher = std::thread(&cShutdown::watch, this);
}

int cShutdown::end() {
  if (watcher.joinable()) {
    {
      const std::lock_guard<std::mutex> lock(mutex);
      finished = true;
      changed.notify_all();
    }
    wakeWatcher();
    watcher.join();
  }
  return isCutShort() ? cause.load() : 0;
}

void cShutdown::requestByReader() {
  int none = NONE;
  cause.compare_exchange_strong(none, SIGPIPE);
  wakeWatcher();
}

void cShutdown::limitTime(double seconds) {
  sigevent event{};
  event.sigev_notify = SIGEV_SIGNAL;
  event.sigev_signo = SIGTERM;
  timer_t timer{};
  itimerspec limit{};
  const auto nanoseconds =
      static_cast<std::int64_t>(std::ceil(seconds * static_cast<double>(SECOND_NS)));
  limit.it_value.tv_sec = nanoseconds / SECOND_NS;
  limit.it_value.tv_nsec = nanoseconds % SECOND_NS;
  if (timer_create(CLOCK_MONOTONIC, &event, &timer) != 0 ||
      timer_settime(timer, 0, &limit, nullptr) != 0) {
    throw std::system_error(errno, std::generic_category(), "cannot limit the time");
  }
}

void cShutdown::wait() {
  std::unique_lock<std::mutex> lock(mutex);
  changed.wait(lock, [this] { return isRequested(); });
}

bool cShutdown::waitFor(std::chrono::milliseconds timeOut) {
  std::unique_lock<std::mutex> lock(mutex);
  return changed.wait_for(lock, timeOut, [this] { return isRequested(); });
}

void cShutdown::setImmediate(bool on) {
  const std::lock_guard<std::mutex> lock(mutex);
  immediate = on;
  changed.notify_all();
}

cShutdown::cExitHook::cExitHook(cShutdown& stop, std::function<void()> act) : stop(stop) {
  const std::lock_guard<std::mutex> lock(stop.mutex);
  place = stop.exitHooks.insert(stop.exitHooks.begin(), std::move(act));
}

cShutdown::cExitHook::~cExitHook() {
  const std::lock_guard<std::mutex> lock(stop.mutex);
  stop.exitHooks.erase(place);
}

void cShutdown::wakeWatcher() {
  // Blocked there and taken by sigwaitinfo, so that it ends nothing by itself.
  pthread_kill(watcher.native_handle(), SIGTERM);  // NOLINT(bugprone-bad-signal-to-kill-thread)
}

void cShutdown::watch() {
  siginfo_t signal;
  // Giving back a controlling terminal (TIOCNOTTY) sends a hang-up from this very process.
  while (sigwaitinfo(&signals, &signal) < 0 || (signal.si_signo == SIGHUP && isOwn(signal))) {
  }
  noteCause(signal);
  shutDown();
}

/// Not where `end` or `requestByReader` woke the watcher.
void cShutdown::noteCause(const siginfo_t& signal) {
  const int seen = signal.si_code == SI_TIMER ? TIME_OVER : signal.si_signo;
  int none = NONE;
  if (!isOwn(signal)) cause.compare_exchange_strong(none, seen);
}

void cShutdown::shutDown() {
  std::unique_lock<std::mutex> lock(mutex);
  changed.notify_all();
  changed.wait_for(lock, GRACE, [this] { return finished || immediate; });
  if (finished) return;
  for (const auto& act : exitHooks) act();
  if (isCutShort()) dieBySignal(cause);
  _exit(static_cast<int>(eExit::SUCCESS));
}

void dieBySignal(int signal) {
  sigset_t own;
  sigemptyset(&own);
  sigaddset(&own, signal);
  std::signal(signal, SIG_DFL);
  pthread_sigmask(SIG_UNBLOCK, &own, nullptr);
  kill(getpid(), signal);
  _exit(128 + signal);
}

}  // namespace tool
