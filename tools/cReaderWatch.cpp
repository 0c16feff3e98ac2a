#include "tools/cReaderWatch.h"

#include <poll.h>
#include <sys/eventfd.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace tool {

namespace {

int openEvent() {
  const int fd = eventfd(0, EFD_CLOEXEC);
  if (fd < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
  return fd;
}

}  // namespace

cReaderWatch::cReaderWatch(const cOutput& output, cStop& ender)
    : stop(ender), over(openEvent()), watcher(&cReaderWatch::watch, this, output.getDescriptor()) {}

cReaderWatch::~cReaderWatch() {
  eventfd_write(over.get(), 1);
  watcher.join();
}

void cReaderWatch::watch(int data) {
  // Asked for nothing, poll tells of a pipe without readers (POLLERR) and of a lost terminal
  // (POLLHUP) alone; a descriptor of -1 it passes over.
  std::array<pollfd, 2> sources{{{data, 0, 0}, {over.get(), POLLIN, 0}}};
  while (poll(sources.data(), sources.size(), -1) < 0 && errno == EINTR) {
  }
  if (sources[1].revents == 0) stop.request();
}

}  // namespace tool
