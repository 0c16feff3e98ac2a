// Two sensors: each has a driver and a thread of its own, from the search to the stop.
#include <future>
#include <iostream>
#include <string>

#include "tarvolink/tarvolink.h"

constexpr int SCANS = 10;

/// Takes scans from the sensor on `device`; whether all came.
bool scanFrom(const std::string& device) {
  auto sensor = cSensorDriverManager::create(device);
  if (!sensor) {
    std::cerr << "no sensor answers on " + device + ": is it plugged in and powered?\n";
    return false;
  }
  iSCIP2IF& scanner = *sensor->getSCIP2IF();
  const int first = sensor->getMinSpot(), last = sensor->getMaxSpot();
  if (scanner.startScan(first, last, 1, 0, 0, sensor->getMaxDist()) < 0) {
    std::cerr << "the sensor on " + device + " does not start scanning\n";
    return false;
  }
  int taken = 0;
  while (taken < SCANS && scanner.waitScan(2000)) {
    while (auto scan = scanner.getScanFirst()) {
      std::string line = device + ", " + std::to_string(++taken) + ": ";
      line += std::to_string(scan->points.size()) + " points\n";
      std::cout << line;  // at once: both threads write
    }
  }
  scanner.stopAll();
  scanner.abortScan();
  if (taken >= SCANS) return true;
  std::cerr << "no scan came from " + device + " for 2 s: look at its power and cable\n";
  return false;
}

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: two_sensors DEVICE DEVICE\n";
    return 1;
  }
  // A search takes up to a minute: both run at the same time.
  auto one = std::async(std::launch::async, scanFrom, argv[1]);
  auto other = std::async(std::launch::async, scanFrom, argv[2]);
  const bool isOneDone = one.get();
  return other.get() && isOneDone ? 0 : 1;
}
