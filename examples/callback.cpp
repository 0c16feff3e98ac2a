// Looks at each scan in the thread that reads it, and hears of each change of the scanner's health.
#include <cmath>
#include <iostream>
#include <limits>

#include "tarvoscan/tarvoscan.h"

// Invalid readings are NaN, and what is too far is infinite: neither is less than anything.
static float nearest(const tarvo::cLaserScan& scan) {
  float found = std::numeric_limits<float>::infinity();
  for (const float range : scan.ranges) {
    if (range < found) found = range;
  }
  return found;
}

int main(int argc, char** argv) {
  tarvo::cScannerOptions options(argc > 1 ? argv[1] : "/dev/ttyACM0");
  options.onHealth = [](const tarvo::cHealth& health) {
    std::cerr << toText(health.state) << ' ' << health.problem.message << std::endl;
  };
  tarvo::cScanner scanner(options);
  const auto subscription = scanner.subscribe([](const tarvo::tScanPtr& scan) {
    std::cout << scan->number << ": " << nearest(*scan) << " m" << std::endl;
  });
  std::cin.get();  // until Enter
}
