#include "tests/support/syscalls.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <set>

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

/// Does what the C library's function of that name does, unless it is to fail.
template <class tResult, class... tArguments>
tResult pass(const char* name, int error, tArguments... arguments) {
  if (fails(name, error)) return -1;
  return reinterpret_cast<tResult (*)(tArguments...)>(dlsym(RTLD_NEXT, name))(arguments...);
}

}  // namespace

void syscalls::failNth(const char* call, int n) {
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/task"))
    others.insert(std::stoi(entry.path().filename()));
  others.erase(gettid());
  left = n;
  failing = call;
}

bool syscalls::hasFailed() {
  failing = nullptr;
  return left <= 0;
}

void syscalls::stepWallClock(long seconds) { offset += seconds; }

/// A file that this creates gets the usual mode, not the one asked for.
SEEN_BY_THE_LIBRARY int open(const char* path, int flags, ...) {
  if (fails("open", EMFILE)) return -1;
  return static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, flags, 0666));
}

SEEN_BY_THE_LIBRARY int tcgetattr(int fd, termios* modes) noexcept {
  return pass<int>("tcgetattr", EIO, fd, modes);
}

SEEN_BY_THE_LIBRARY int tcsetattr(int fd, int actions, const termios* modes) noexcept {
  ++syscalls::settings;
  syscalls::when = actions;
  syscalls::wanted = *modes;
  return pass<int>("tcsetattr", EIO, fd, actions, modes);
}

SEEN_BY_THE_LIBRARY int poll(pollfd* fds, nfds_t n, int ms) {
  const int ready = pass<int>("poll", ENOMEM, fds, n, ms);
  if (ready == 0) ++syscalls::silentPolls;
  return ready;
}

SEEN_BY_THE_LIBRARY ssize_t read(int fd, void* to, size_t n) {
  return pass<ssize_t>("read", EIO, fd, to, n);
}

SEEN_BY_THE_LIBRARY ssize_t write(int fd, const void* from, size_t n) {
  return pass<ssize_t>("write", EIO, fd, from, n);
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

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // which have their own
extern "C" void* __libc_malloc(size_t size);

SEEN_BY_THE_LIBRARY void* malloc(size_t size) noexcept {
  return fails("malloc", ENOMEM) ? nullptr : __libc_malloc(size);
}
#endif
