// Continuous scanning: waits for each scan and tells how near the nearest thing is.
#include <iostream>
#include <stdexcept>

#include "tarvolink/tarvolink.h"

constexpr int SCANS = 20;
constexpr int PATIENCE_MS = 2000;

/// The shortest distance in `scan`, millimetres; 0 where nothing was in range. Values below
/// `shortest` are the sensor's error codes.
double nearest(const cScan& scan, int shortest) {
  double found = 0;
  for (const cScanPoint& point : scan.points) {
    if (point.distance < shortest) continue;
    if (found == 0 || point.distance < found) found = point.distance;
  }
  return found;
}

int main(int argc, char** argv) {
  const char* const device = argc > 1 ? argv[1] : "/dev/ttyACM0";
  auto sensor = cSensorDriverManager::create(device);
  if (!sensor) {
    std::cerr << "no sensor answers on " << device << ": is it plugged in and powered?\n";
    return 1;
  }
  iSCIP2IF& scanner = *sensor->getSCIP2IF();
  scanner.stopAll();  // an earlier program may have left it scanning
  const int first = sensor->getMinSpot(), last = sensor->getMaxSpot();
  if (scanner.startScan(first, last, 1, 0, 0, sensor->getMaxDist()) < 0) {
    std::cerr << "the sensor on " << device << " does not start scanning\n";
    return 1;
  }
  int taken = 0;
  while (taken < SCANS) {
    try {
      if (!scanner.waitScan(PATIENCE_MS)) break;
      while (auto scan = scanner.getScanFirst())
        std::cout << ++taken << ": nearest " << nearest(*scan, sensor->getMinDist()) << " mm\n";
    } catch (const std::out_of_range&) {
      std::cerr << "a scan came damaged and is left out\n";
    }
  }
  scanner.stopAll();
  scanner.abortScan();
  if (taken >= SCANS) return 0;
  std::cerr << "no scan came for 2 s: look at the sensor's power and cable\n";
  return 1;
}
