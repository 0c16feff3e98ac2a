// A sensor that speaks only SCIP 1.x: a thread of the library asks it for one scan after another,
// and stops asking when an answer fails.
#include <iostream>

#include "tarvolink/tarvolink.h"

constexpr int SCANS = 5;
constexpr int TENTHS = 1;  // of a second between two scans
constexpr int MOST_FAILURES = 10;

int main(int argc, char** argv) {
  const char* const device = argc > 1 ? argv[1] : "/dev/ttyACM0";
  auto sensor = cSensorDriverManager::create(device);
  if (!sensor) {
    std::cerr << "no sensor answers on " << device << ": is it plugged in and powered?\n";
    return 1;
  }
  // What it is called is not asked for while it is looked for.
  if (sensor->getSCIP1IF()->doVersion() != 0)
    std::cerr << "the sensor on " << device << " does not tell its name\n";
  std::cout << "product " << sensor->getProd() << ", protocol " << sensor->getProt() << '\n';

  iSCIP2IF& scanner = *sensor->getSCIP2IF();
  const int first = sensor->getMinSpot(), last = sensor->getMaxSpot();
  const auto start = [&] { return scanner.startScan(first, last, 1, TENTHS, 0, 4095) >= 0; };
  bool isStarted = start();
  int taken = 0;
  for (int failures = 0; isStarted && taken < SCANS && failures < MOST_FAILURES;) {
    scanner.waitScan(2000);  // for an attempt, which may have failed
    while (auto scan = scanner.getScanFirst())
      std::cout << ++taken << ": " << scan->points.size() << " points\n";
    if (scanner.isScanning()) continue;
    ++failures;
    isStarted = start();
  }
  scanner.stopAll();
  scanner.abortScan();
  if (taken >= SCANS) return 0;
  std::cerr << "the sensor on " << device << " gives no more scans\n";
  return 1;
}
