// One scan now and then, instead of a stream: the laser is lit first, then each scan is asked for.
#include <iostream>

#include "tarvolink/tarvolink.h"

/// One scan of all steps; empty when the sensor gave none.
boost::shared_ptr<cScan> takeScan(cSensorDriver& sensor) {
  iSCIP2IF& scanner = *sensor.getSCIP2IF();
  const int first = sensor.getMinSpot(), last = sensor.getMaxSpot();
  if (scanner.getStoredScan(first, last, 1, sensor.getMaxDist()) < 0) return {};
  // With SCIP 2.0 the scan is there now; with SCIP 1.x a thread of the library is taking it.
  if (dynamic_cast<cSensorDriverSCIP1*>(&sensor) != nullptr) scanner.waitScan(2000);
  return scanner.getScanFirst();
}

int main(int argc, char** argv) {
  const char* const device = argc > 1 ? argv[1] : "/dev/ttyACM0";
  auto sensor = cSensorDriverManager::create(device);
  if (!sensor) {
    std::cerr << "no sensor answers on " << device << ": is it plugged in and powered?\n";
    return 1;
  }
  iSCIP2IF& scanner = *sensor->getSCIP2IF();
  scanner.stopAll();  // a laser that is on already would refuse the next line
  if (scanner.startStoringScan() < 0) {
    std::cerr << "the sensor on " << device << " does not light its laser\n";
    return 1;
  }
  const auto scan = takeScan(*sensor);
  scanner.stopAll();  // the laser goes off
  scanner.abortScan();
  if (!scan) {
    std::cerr << "the sensor on " << device << " gave no scan\n";
    return 1;
  }
  for (const cScanPoint& point : scan->points)
    std::cout << point.angle << " rad: " << point.distance << " mm\n";
}
