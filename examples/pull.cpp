// Takes scans one after the other, through pulled cables and power cuts.
#include <iostream>

#include "tarvoscan/tarvoscan.h"

int main(int argc, char** argv) {
  tarvo::cScanner scanner(argc > 1 ? argv[1] : "/dev/ttyACM0");
  while (true) {
    if (const auto scan = scanner.next(std::chrono::seconds(1)))
      std::cout << scan->number << ": " << scan->ranges.size() << " points" << std::endl;
    else
      std::cerr << scanner.getHealth().problem.message << '\n';
  }
}
