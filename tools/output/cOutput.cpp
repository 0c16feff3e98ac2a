#include "tools/output/cOutput.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>

#include "tools/base/cFailure.h"
#include "tools/base/printable.h"
#include "tools/output/cAtomicFile.h"

namespace tool {

namespace {

constexpr int POLL_MS = 100;  // how soon a stop is noticed while the reader takes nothing
constexpr std::chrono::milliseconds FIFO_PAUSE{50};

/// Takes standard output for the data and leaves standard error in its place.
int takeStandardOutput() {
  const int fd = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  dup2(STDERR_FILENO, STDOUT_FILENO);
  return fd;
}

/// Pipes and devices are written to as they are.
bool isRegularFile(const std::string& file) {
  struct stat older {};
  if (file.empty()) return false;
  return stat(file.c_str(), &older) != 0 || S_ISREG(older.st_mode) || S_ISDIR(older.st_mode);
}

/// Such as a sensor's port. Opened without waiting for a carrier.
bool isOtherTerminal(const std::string& file) {
  struct stat device {};
  struct stat output {};
  if (stat(file.c_str(), &device) != 0 || !S_ISCHR(device.st_mode)) return false;
  if (fstat(STDOUT_FILENO, &output) == 0 && output.st_rdev == device.st_rdev) return false;
  const cDescriptor opened(open(file.c_str(), O_WRONLY | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
  return opened.get() >= 0 && isatty(opened.get()) != 0;
}

[[noreturn]] void failForDevice(const std::string& path, const char* what) {
  throw cFailure(eExit::BAD_INPUT,
                 fmt::format("cannot write to {}: it is {}. Give a file, or - for standard output.",
                             oneLine(path), what));
}

/// A FIFO has to have a reader before it can be opened.
int openAsItIs(const std::string& file, const cShutdown& stop) {
  for (;;) {
    const int fd = open(file.c_str(), O_WRONLY | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (fd >= 0) fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) & ~O_NONBLOCK);
    if (fd >= 0 || errno != ENXIO) return fd;
    if (stop.waitFor(FIFO_PAUSE)) throw cInterrupted();
  }
}

int openDirect(const std::string& file, bool isReplacing, const cShutdown& stop) {
  if (isOtherTerminal(file)) failForDevice(file, "a terminal or a serial device");
  const int opened = file.empty() || isReplacing ? -1 : openAsItIs(file, stop);
  const int error = errno;
  const int standardOutput = takeStandardOutput();
  if (file.empty()) return standardOutput;
  close(standardOutput);
  errno = error;
  return opened;
}

/// So is what was closed when the program started.
bool isReadOnly(int fd) { return (fcntl(fd, F_GETFL) & O_ACCMODE) == O_RDONLY; }

}  // namespace

cOutput::cOutput(const std::string& path, cShutdown& stop)
    : stop(stop),
      name(path.empty() ? "standard output" : path),
      isReplacing(isRegularFile(path)),
      direct(openDirect(path, isReplacing, stop)) {
  if (isReplacing) {
    checkWritable(name);
  } else if (direct.get() < 0) {
    fail();
  } else if (isReadOnly(direct.get())) {
    throwWriteError(name, EBADF);
  }
}

void cOutput::write(std::string_view text) {
  if (isReplacing && !file) file = std::make_unique<cAtomicFile>(name);
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
      stop.requestByReader();
    } else if (errno != EINTR && errno != EAGAIN) {
      fail();
    }
  }
}

void cOutput::refuseDevice(const std::string& path) const {
  struct stat device {};
  struct stat own {};
  if (!isTerminal() || stat(path.c_str(), &device) != 0) return;
  if (fstat(getDescriptor(), &own) != 0 || device.st_rdev != own.st_rdev) return;
  failForDevice(name, "the device that the scans come from");
}

void cOutput::finish() {
  if (file) file->commit();
}

/// Asked for nothing, poll tells of a pipe without readers (POLLERR) and of a lost terminal
/// (POLLHUP) alone.
bool cOutput::isReaderGone() const {
  pollfd descriptor{getDescriptor(), 0, 0};
  return poll(&descriptor, 1, 0) > 0 && (descriptor.revents & (POLLERR | POLLHUP)) != 0;
}

bool cOutput::isTerminal() const { return isatty(getDescriptor()) != 0; }

int cOutput::getDescriptor() const { return file ? file->getDescriptor() : direct.get(); }

/// What holds of the descriptor at once, or after waiting for room; 0: nothing yet.
short cOutput::waitFor(int milliseconds) const {
  pollfd descriptor{getDescriptor(), POLLOUT, 0};
  return poll(&descriptor, 1, milliseconds) > 0 ? descriptor.revents : short(0);
}

void cOutput::fail() const { throwWriteError(name, errno); }

}  // namespace tool
