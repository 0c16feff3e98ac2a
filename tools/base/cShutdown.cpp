#include "tools/base/cShutdown.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <system_error>

namespace tool {

namespace {

constexpr int HANDLED[] = {SIGINT, SIGTERM, SIGHUP};
constexpr std::chrono::hours LONG_TIME{1};

// What a signal handler needs, therefore static.
std::atomic<int> cause{0};  // the signal; SIGPIPE: the reader has gone
int stopEvent = -1;         // readable once there is a cause

void request(int signal) {
  const int error = errno;
  int none = 0;
  cause.compare_exchange_strong(none, signal);
  [[maybe_unused]] const int written = eventfd_write(stopEvent, 1);
  errno = error;
}

void handle(int signal, void (*handler)(int)) {
  struct sigaction action {};
  sigaction(signal, nullptr, &action);
  if (action.sa_handler == SIG_IGN && signal != SIGTERM) return;
  action.sa_handler = handler;
  action.sa_flags = 0;
  sigemptyset(&action.sa_mask);
  sigaction(signal, &action, nullptr);
}

}  // namespace

cShutdown::cShutdown() {
  stopEvent = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  if (stopEvent < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
  for (const int signal : HANDLED) handle(signal, request);
}

cShutdown::~cShutdown() {
  for (const int signal : HANDLED) handle(signal, SIG_DFL);
  close(stopEvent);
}

bool cShutdown::isRequested() const { return cause != 0 || (limit && cClock::now() >= *limit); }

bool cShutdown::isCutShort() const { return cause != 0 && !isExpected; }

int cShutdown::getFatalSignal() const { return isCutShort() ? cause.load() : 0; }

void cShutdown::requestByReader() { request(SIGPIPE); }

void cShutdown::limitTime(double seconds) {
  limit = cClock::now() +
          std::chrono::duration_cast<cClock::duration>(std::chrono::duration<double>(seconds));
}

bool cShutdown::waitFor(std::chrono::milliseconds timeOut, int descriptor) const {
  auto end = cClock::now() + timeOut;
  if (limit) end = std::min(end, *limit);
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - cClock::now());
  pollfd events[] = {{stopEvent, POLLIN, 0}, {descriptor, POLLIN, 0}};
  poll(events, 2, static_cast<int>(std::max<std::int64_t>(left.count(), 0)));
  return isRequested();
}

void cShutdown::wait() const {
  while (!waitFor(LONG_TIME)) {
  }
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
