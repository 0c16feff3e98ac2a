// Asks a sensor about itself while it scans, and switches its laser off for a while.
#include <iostream>

#include "tarvoscan/tarvoscan.h"

int main(int argc, char** argv) {
  tarvo::cScanner scanner(argc > 1 ? argv[1] : "/dev/ttyACM0");
  if (!scanner.next(std::chrono::seconds(10))) {
    std::cerr << scanner.getHealth().problem.message << '\n';
    return 1;
  }
  const auto status = scanner.fetchStatus();
  std::cout << (status ? status.sensor->product + ": " + status.sensor->status : status.problem)
            << '\n';
  const auto off = scanner.setLaser(false);
  std::cout << (off ? "the laser is off" : off.problem) << '\n';
  const auto on = scanner.setLaser(true);
  std::cout << (on ? "the laser is on" : on.problem) << '\n';
  return status && off && on ? 0 : 1;
}
