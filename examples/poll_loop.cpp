// Waits for a sensor and for the keyboard in one loop, as programs with a poll(2) of their own do.
#include <poll.h>
#include <unistd.h>

#include <iostream>

#include "tarvoscan/tarvoscan.h"

int main(int argc, char** argv) {
  tarvo::cScanner scanner(argc > 1 ? argv[1] : "/dev/ttyACM0");
  tarvo::cSubscription scans = scanner.subscribe(4);
  pollfd events[] = {{scans.getDescriptor(), POLLIN, 0}, {STDIN_FILENO, POLLIN, 0}};
  while (poll(events, 2, -1) > 0) {
    if (events[1].revents != 0) break;  // Enter, or the end of input
    while (const auto scan = scans.next(std::chrono::milliseconds(0)))
      std::cout << scan->number << " at " << scan->stampUtc / 1000000 << " ms" << std::endl;
  }
}
