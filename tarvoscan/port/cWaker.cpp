#include "tarvoscan/port/cWaker.h"

#include <poll.h>
#include <sys/eventfd.h>

namespace tarvo {

namespace {

int openEvent() { return eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK); }

}  // namespace

cWaker::cWaker() : stopEvent(openEvent()), workEvent(openEvent()) {}

void cWaker::requestStop() noexcept {
  stopping = true;
  eventfd_write(stopEvent.get(), 1);
}

void cWaker::reset() {
  eventfd_t count = 0;
  eventfd_read(stopEvent.get(), &count);
  stopping = false;
}

void cWaker::wake() noexcept { eventfd_write(workEvent.get(), 1); }

void cWaker::takeWake() noexcept {
  eventfd_t count = 0;
  eventfd_read(workEvent.get(), &count);
}

void cWaker::sleep(std::chrono::milliseconds time) const {
  pollfd events[] = {{stopEvent.get(), POLLIN, 0}, {workEvent.get(), POLLIN, 0}};
  poll(events, 2, static_cast<int>(time.count()));
}

}  // namespace tarvo
