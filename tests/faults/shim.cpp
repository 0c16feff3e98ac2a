#include "tests/faults/shim.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <termios.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>

#include "tests/faults/cFaultOracle.h"

#define SEEN_BY_THE_LIBRARY extern "C" __attribute__((visibility("default")))

namespace {

std::set<int> others;  // threads whose calls never fail
std::atomic<const char*> failing{nullptr};
std::atomic<int> left{0};
std::atomic<long> offset{0};

bool fails(const char* call, int error) {
  const char* const name = failing;
  if (name == nullptr || std::strcmp(name, call) != 0 || others.count(gettid()) > 0) return false;
  if (left.fetch_sub(1) != 1) return false;
  errno = error;
  return true;
}

template <class tCall>
tCall next(const char* name) {
  return reinterpret_cast<tCall>(dlsym(RTLD_NEXT, name));
}

}  // namespace

void shim::failNth(const char* call, int n) {
  others = getOtherThreads();
  left = n;
  failing = call;
}

bool shim::hasFailed() {
  failing = nullptr;
  return left <= 0;
}

void shim::stepWallClock(long seconds) { offset += seconds; }

/// What is made so gets the usual mode, whatever is asked for.
SEEN_BY_THE_LIBRARY int open(const char* path, int flags, ...) {
  if (fails("open", EMFILE)) return -1;
  return static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, flags, 0666));
}

SEEN_BY_THE_LIBRARY int tcgetattr(int fd, termios* attributes) noexcept {
  static const auto call = next<int (*)(int, termios*)>("tcgetattr");
  return fails("tcgetattr", EIO) ? -1 : call(fd, attributes);
}

SEEN_BY_THE_LIBRARY int tcsetattr(int fd, int when, const termios* attributes) noexcept {
  static const auto call = next<int (*)(int, int, const termios*)>("tcsetattr");
  return fails("tcsetattr", EIO) ? -1 : call(fd, when, attributes);
}

SEEN_BY_THE_LIBRARY int poll(pollfd* fds, nfds_t count, int timeout) {
  if (fails("poll", ENOMEM)) return -1;
  const timespec limit = {timeout / 1000, timeout % 1000 * 1000000L};
  return ppoll(fds, count, timeout < 0 ? nullptr : &limit, nullptr);
}

SEEN_BY_THE_LIBRARY ssize_t read(int fd, void* buffer, size_t size) {
  return fails("read", EIO) ? -1 : syscall(SYS_read, fd, buffer, size);
}

SEEN_BY_THE_LIBRARY ssize_t write(int fd, const void* bytes, size_t size) {
  return fails("write", EIO) ? -1 : syscall(SYS_write, fd, bytes, size);
}

SEEN_BY_THE_LIBRARY int clock_gettime(clockid_t clock, timespec* now) noexcept {
  const long result = syscall(SYS_clock_gettime, clock, now);
  if (clock == CLOCK_REALTIME) now->tv_sec += offset;
  return static_cast<int>(result);
}

SEEN_BY_THE_LIBRARY int gettimeofday(timeval* now, void*) noexcept {
  timespec real = {};
  const int result = clock_gettime(CLOCK_REALTIME, &real);
  *now = {real.tv_sec, real.tv_nsec / 1000};
  return result;
}

// A sanitizer has an allocator of its own.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
extern "C" void* __libc_malloc(size_t size);

SEEN_BY_THE_LIBRARY void* malloc(size_t size) noexcept {
  return fails("malloc", ENOMEM) ? nullptr : __libc_malloc(size);
}
#endif
