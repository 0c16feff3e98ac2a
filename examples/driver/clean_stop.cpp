// Scans until SIGINT (Ctrl-C) or SIGTERM comes, and leaves the sensor with its laser off.
#include <csignal>
#include <iostream>
#include <stdexcept>

#include "tarvolink/tarvolink.h"

// The library's threads block all signals but those of their own faults: this handler runs in the
// program's own threads. It sets a flag and nothing else, as a handler must.
volatile std::sig_atomic_t isStopWanted = 0;

void wantStop(int) { isStopWanted = 1; }

int main(int argc, char** argv) {
  const char* const device = argc > 1 ? argv[1] : "/dev/ttyACM0";
  auto sensor = cSensorDriverManager::create(device);
  if (!sensor) {
    std::cerr << "no sensor answers on " << device << ": is it plugged in and powered?\n";
    return 1;
  }
  // Only now: during the search, which takes up to a minute, a signal may end the program at once.
  std::signal(SIGINT, wantStop);
  std::signal(SIGTERM, wantStop);
  iSCIP2IF& scanner = *sensor->getSCIP2IF();
  const int first = sensor->getMinSpot(), last = sensor->getMaxSpot();
  if (scanner.startScan(first, last, 1, 0, 0, sensor->getMaxDist()) < 0) {
    std::cerr << "the sensor on " << device << " does not start scanning\n";
    return 1;
  }
  int taken = 0;
  int silentWaits = 0;
  while (!isStopWanted && silentWaits < 10) {
    try {
      // A signal does not end the wait: it is a short one.
      silentWaits = scanner.waitScan(200) ? 0 : silentWaits + 1;
      while (auto scan = scanner.getScanFirst())
        std::cout << ++taken << ": " << scan->points.size() << " points" << std::endl;
    } catch (const std::out_of_range&) {
      std::cerr << "a scan came damaged and is left out\n";  // and no reason to leave the laser on
    }
  }
  scanner.stopAll();
  scanner.abortScan();
  if (isStopWanted) return 0;
  std::cerr << "no scan came for 2 s: look at the sensor's power and cable\n";
  return 1;
}
