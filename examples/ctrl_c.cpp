#include <csignal>
#include <iostream>

#include "tarvoscan/tarvoscan.h"

static tarvo::cScanner* running = nullptr;

int main(int argc, char** argv) {
  tarvo::cScanner scanner(argc > 1 ? argv[1] : "/dev/ttyACM0");
  running = &scanner;
  std::signal(SIGINT, [](int) { running->requestStop(); });
  while (!scanner.isStopped()) {
    if (const auto scan = scanner.next(std::chrono::seconds(1)))
      std::cout << scan->number << ": " << scan->ranges.size() << " points, the first "
                << scan->ranges[0] << " m away" << std::endl;
    else if (const auto problem = scanner.getHealth().problem)
      std::cerr << problem.message << ' ' << problem.hint << std::endl;
  }
}
