#include "tests/support/syscalls.h"

#include <dlfcn.h>
#include <poll.h>

#include <ctime>

#define SEEN_BY_THE_LIBRARY __attribute__((visibility("default")))

extern "C" SEEN_BY_THE_LIBRARY int poll(pollfd* fds, nfds_t count, int timeout) {
  ++syscalls::polls;
  const timespec limit = {timeout / 1000, timeout % 1000 * 1000000L};
  const int ready = ppoll(fds, count, timeout < 0 ? nullptr : &limit, nullptr);
  if (ready == 0) ++syscalls::silentPolls;
  return ready;
}

extern "C" SEEN_BY_THE_LIBRARY int tcsetattr(int fd, int actions,
                                             const termios* attributes) noexcept {
  ++syscalls::settings;
  syscalls::when = actions;
  syscalls::wanted = *attributes;
  if (syscalls::refuses) return -1;
  using tCall = int (*)(int, int, const termios*);
  static const auto next = reinterpret_cast<tCall>(dlsym(RTLD_NEXT, "tcsetattr"));
  return next(fd, actions, attributes);
}
