#include "tools/terminal/cMessageBuffer.h"

#include <fcntl.h>
#include <unistd.h>

namespace tool {

namespace {

void replaceStandardStreams(int fd) {
  dup2(fd, STDERR_FILENO);
  dup2(fd, STDOUT_FILENO);  // since cOutput took the data's, the same
  close(fd);
}

}  // namespace

void cMessageBuffer::begin() {
  int ends[2];
  if (real >= 0 || isatty(STDERR_FILENO) == 0 || pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) return;
  real = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  reader = ends[0];
  replaceStandardStreams(ends[1]);
}

void cMessageBuffer::flush() {
  if (real < 0) return;
  replaceStandardStreams(real);
  real = -1;
  char buffer[512];
  ssize_t got = 0;
  while ((got = read(reader, buffer, sizeof buffer)) > 0) {
    if (write(STDERR_FILENO, buffer, static_cast<size_t>(got)) < 0) break;
  }
  close(reader);
}

}  // namespace tool
