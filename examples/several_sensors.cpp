// Takes the newest scan of each of several sensors, ten times a second.
#include <iostream>
#include <memory>
#include <thread>
#include <vector>

#include "tarvoscan/tarvoscan.h"

int main(int argc, char** argv) {
  std::vector<std::unique_ptr<tarvo::cScanner>> scanners;
  std::vector<tarvo::cSubscription> newest;
  for (int i = 1; i < argc; ++i) {
    scanners.push_back(std::make_unique<tarvo::cScanner>(argv[i]));
    newest.push_back(scanners.back()->subscribe(1));
  }
  for (int round = 0; round < 50; ++round) {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    for (auto& subscription : newest) {
      if (const auto scan = subscription.latest())
        std::cout << scan->sensor->device << ", " << scan->number << ": " << scan->ranges.size()
                  << " points" << std::endl;
    }
  }
}
