#include <iostream>

#include "tarvolink/tarvolink.h"

int main(int argc, char** argv) {
  const char* const device = argc > 1 ? argv[1] : "/dev/ttyACM0";
  auto sensor = cSensorDriverManager::create(device);
  if (!sensor) {
    std::cerr << "no sensor answers on " << device << ": is it plugged in and powered?\n";
    return 1;
  }
  iSCIP2IF& scanner = *sensor->getSCIP2IF();
  const int first = sensor->getMinSpot(), last = sensor->getMaxSpot();
  if (scanner.startScan(first, last, 1, 0, 0, sensor->getMaxDist()) < 0) {
    std::cerr << "the sensor on " << device << " does not start scanning\n";
    return 1;
  }
  int taken = 0;
  while (taken < 5 && scanner.waitScan(2000))
    while (auto scan = scanner.getScanFirst())
      std::cout << ++taken << ": " << scan->points.size() << " points, the first "
                << scan->points.at(0).distance << " mm away\n";
  scanner.stopAll();
  scanner.abortScan();
  if (taken > 0) return 0;
  std::cerr << "the sensor on " << device << " sent no scan within 2 s: look at its cable\n";
  return 1;
}
