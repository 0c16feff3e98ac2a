#include "tools/cOutput.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>

#include "tools/cFailure.h"
#include "tools/replaceFile.h"

namespace tool {

namespace {

constexpr int POLL_MS = 100;  // how soon a stop is noticed while the reader takes nothing

/// Takes standard output for the data and leaves standard error in its place.
int takeStandardOutput() {
  const int fd = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  dup2(STDERR_FILENO, STDOUT_FILENO);
  return fd;
}

/// Pipes and devices are written to as they are.
bool isToReplace(const std::string& file) {
  struct stat older {};
  if (file.empty()) return false;
  return stat(file.c_str(), &older) != 0 || S_ISREG(older.st_mode) || S_ISDIR(older.st_mode);
}

int openDirect(const std::string& file, bool isReplacing, cStop& stop) {
  const cStop::cAtOnce nothingToStop(stop);
  const int given =
      file.empty() || isReplacing ? -1 : open(file.c_str(), O_WRONLY | O_NOCTTY | O_CLOEXEC);
  const int error = errno;
  const int standardOutput = takeStandardOutput();
  if (file.empty()) return standardOutput;
  close(standardOutput);
  errno = error;
  return given;
}

/// So is what was closed when the program started.
bool isReadOnly(int fd) { return (fcntl(fd, F_GETFL) & O_ACCMODE) == O_RDONLY; }

}  // namespace

cOutput::cOutput(const std::string& path, cStop& ender)
    : stop(ender),
      name(path.empty() ? "standard output" : path),
      isReplacing(isToReplace(path)),
      direct(openDirect(path, isReplacing, ender)) {
  if (isReplacing) {
    checkReplaceable(name);
  } else if (direct.get() < 0) {
    fail();
  } else if (isReadOnly(direct.get())) {
    failToWrite(name, EBADF);
  }
}

void cOutput::write(std::string_view text) {
  if (isReplacing && !file) file = std::make_unique<cFileBeside>(name);
  while (!text.empty() && !over) {
    if (waitFor(POLL_MS) == 0) {
      over = stop.isRequested();
      continue;
    }
    // A pipe that is ready takes PIPE_BUF bytes without blocking, and no more for certain.
    const ssize_t written =
        ::write(getDescriptor(), text.data(), std::min<std::size_t>(text.size(), PIPE_BUF));
    if (written >= 0) {
      text.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno == EPIPE || (errno == EIO && (waitFor(0) & POLLHUP) != 0)) {
      over = true;
    } else if (errno != EINTR && errno != EAGAIN) {
      fail();
    }
  }
}

void cOutput::finish() {
  if (file) file->takePlace();
}

bool cOutput::isTerminal() const { return isatty(getDescriptor()) != 0; }

int cOutput::getDescriptor() const { return file ? file->getDescriptor() : direct.get(); }

/// What holds of the descriptor at once, or after waiting for room; 0: nothing yet.
short cOutput::waitFor(int milliseconds) const {
  pollfd descriptor{getDescriptor(), POLLOUT, 0};
  return poll(&descriptor, 1, milliseconds) > 0 ? descriptor.revents : short(0);
}

void cOutput::fail() const { failToWrite(name, errno); }

}  // namespace tool
