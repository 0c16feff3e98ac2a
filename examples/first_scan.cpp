#include <iostream>

#include "tarvolink/tarvolink.h"

int main(int argc, char** argv) {
  auto sensor = cSensorDriverManager::create(argc > 1 ? argv[1] : "/dev/ttyACM0");
  if (!sensor) return 1;
  iSCIP2IF& scanner = *sensor->getSCIP2IF();
  const int first = sensor->getMinSpot(), last = sensor->getMaxSpot();
  if (scanner.startScan(first, last, 1, 0, 0, sensor->getMaxDist()) < 0) return 1;
  for (int taken = 0; taken < 5 && scanner.waitScan(2000);)
    while (auto scan = scanner.getScanFirst())
      std::cout << ++taken << ": " << scan->points.size() << " points, the first "
                << scan->points.at(0).distance << " mm away\n";
  scanner.stopAll();
  scanner.abortScan();
}
