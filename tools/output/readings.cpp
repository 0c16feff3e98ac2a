#include "tools/output/readings.h"

#include <cmath>

namespace tool {

std::vector<cReading> readingsOf(const tarvo::cLaserScan& scan) {
  std::vector<cReading> readings;
  readings.reserve(scan.distances.size());
  for (std::size_t i = 0; i < scan.distances.size(); ++i) {
    if (std::isfinite(scan.ranges[i]))
      readings.push_back({static_cast<double>(scan.distances[i]), angleOf(scan, i)});
  }
  return readings;
}

}  // namespace tool
