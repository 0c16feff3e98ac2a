#include "tarvolink/scip1/cSensorDriverSCIP1z.h"

#include <algorithm>
#include <iostream>
#include <sstream>

#include "tarvolink/scip1/geometry.h"

namespace {

constexpr int WIDTH = 3;               // characters a distance
constexpr long long LINE_LENGTH = 64;  // characters of every line but the last

/// Distances between two steps, the last group counted even when it is partial.
long long countReadings(int start, int end, int cluster) {
  const long long steps = static_cast<long long>(end) - start + 1;
  if (cluster == 0) return steps;
  return steps / cluster + (steps % cluster != 0 ? 1 : 0);
}

}  // namespace

boost::shared_ptr<cScan> cSensorDriverSCIP1z::addScan(int start, int end, int cluster) {
  boost::shared_ptr<cScan> scan;
  {
    const cExchangeLock lock(*this);
    scan = decode(start, end, cluster);
  }
  return publish(scan);
}

boost::shared_ptr<cScan> cSensorDriverSCIP1z::decode(int start, int end, int cluster) {
  boost::shared_ptr<cScan> none;
  const long long expected = countReadings(start, end, cluster);
  // Degrees here, radians for two characters: each decoder's callers rely on its unit.
  factory.scan.reset(new cScan(toDegrees(start), toDegrees(end), cluster * SCIP1_DEGREES_PER_STEP));
  factory.scan->timeStamp = kavTBX::cTime(boost::posix_time::microsec_clock::local_time());
  if (!addLines(expected * WIDTH)) return none;
  const auto points = static_cast<long long>(factory.scan->points.size());
  if (points == expected) return factory.scan;
  std::cerr << "comm error: mixed response? (ret: " << points << " expected:" << expected << ")"
            << std::endl;
  return none;
}

/// Decodes the record's lines; a distance may run across a line break.
bool cSensorDriverSCIP1z::addLines(long long remaining) {
  std::istringstream lines(link->record.body);
  std::string carry;
  for (std::string line; std::getline(lines, line) && !line.empty();) {
    const auto length = static_cast<long long>(line.size());
    if (length != std::min(remaining, LINE_LENGTH)) {
      std::cout << "size not match " << length << " vs " << remaining << std::endl;
      return false;
    }
    remaining -= length;
    carry += line;
    const std::size_t whole = carry.size() - carry.size() % WIDTH;
    factory.addData(decode6bit(carry.substr(0, whole), WIDTH));
    carry.erase(0, whole);
  }
  return true;
}
