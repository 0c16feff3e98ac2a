#include "bench/cChild.h"

#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fmt/core.h>

#include <cerrno>
#include <exception>
#include <system_error>

namespace {

[[noreturn]] void runChild(const std::function<void(int)>& body, int pipe) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);  // so that a killed benchmark leaves no sensor behind
  try {
    body(pipe);
  } catch (const std::exception& error) {
    fmt::print(stderr, "tarvobench: sensor process: {}\n", error.what());
  }
  _exit(0);
}

}  // namespace

cChild::cChild(const std::function<void(int pipe)>& body) {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
    throw std::system_error(errno, std::generic_category(),
                            "cannot create a pipe to a sensor process");
  }
  pipe = cDescriptor(ends[0]);
  cDescriptor childsEnd(ends[1]);
  child = fork();
  if (child < 0)
    throw std::system_error(errno, std::generic_category(), "cannot start a sensor process (fork)");
  if (child == 0) {
    pipe = cDescriptor();
    runChild(body, childsEnd.get());
  }
}

cChild::~cChild() {
  kill(child, SIGKILL);
  while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
  }
}
