#include "tools/cBrokenPipeWatch.h"

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

cBrokenPipeWatch::cBrokenPipeWatch(const cOutput& output, cShutdown& stop)
    : stop(stop),
      stopEvent(openEvent()),
      watcher(&cBrokenPipeWatch::watch, this, output.getDescriptor()) {}

cBrokenPipeWatch::~cBrokenPipeWatch() {
  eventfd_write(stopEvent.get(), 1);
  watcher.join();
}

void cBrokenPipeWatch::watch(int data) {
  // Asked for nothing, poll tells of a pipe without readers (POLLERR) and of a lost terminal
  // (POLLHUP) alone; a descriptor of -1 it passes over.
  std::array<pollfd, 2> sources{{{data, 0, 0}, {stopEvent.get(), POLLIN, 0}}};
  while (poll(sources.data(), sources.size(), -1) < 0 && errno == EINTR) {
  }
  if (sources[1].revents == 0) stop.requestByReader();
}

}  // namespace tool
