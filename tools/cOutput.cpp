#include "tools/cOutput.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>

#include "tools/cFailure.h"

namespace tool {

namespace {

constexpr int POLL_MS = 100;  // how soon a stop is noticed while the reader takes nothing

/// Takes standard output for the data and leaves standard error in its place.
int takeStandardOutput() {
  const int fd = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  dup2(STDERR_FILENO, STDOUT_FILENO);
  return fd;
}

int openData(const std::string& file) {
  const int standardOutput = takeStandardOutput();
  if (file.empty()) return standardOutput;
  close(standardOutput);
  return open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOCTTY | O_CLOEXEC, 0666);
}

}  // namespace

cOutput::cOutput(const std::string& file, const cStop& ender)
    : stop(ender), name(file.empty() ? "standard output" : file), fd(openData(file)) {
  if (fd < 0) fail();
}

cOutput::~cOutput() { close(fd); }

void cOutput::write(std::string_view text) {
  while (!text.empty() && !over) {
    if (!waitWritable()) {
      over = stop.isRequested();
      continue;
    }
    // A pipe that is ready takes PIPE_BUF bytes without blocking, and no more for certain.
    const ssize_t written = ::write(fd, text.data(), std::min<std::size_t>(text.size(), PIPE_BUF));
    if (written >= 0) {
      text.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno == EPIPE || (errno == EIO && isHungUp())) {
      over = true;
    } else if (errno != EINTR && errno != EAGAIN) {
      fail();
    }
  }
}

bool cOutput::isTerminal() const { return isatty(fd) != 0; }

bool cOutput::isHungUp() const {
  pollfd descriptor{fd, POLLOUT, 0};
  return poll(&descriptor, 1, 0) > 0 && (descriptor.revents & POLLHUP) != 0;
}

bool cOutput::waitWritable() const {
  pollfd descriptor{fd, POLLOUT, 0};
  return poll(&descriptor, 1, POLL_MS) > 0;
}

void cOutput::fail() const {
  throw cFailure(eExit::BAD_INPUT,
                 fmt::format("cannot write to {}: {}. Give a file in a folder that you may write "
                             "to and that has room (-o FILE).",
                             name, std::strerror(errno)));
}

}  // namespace tool
