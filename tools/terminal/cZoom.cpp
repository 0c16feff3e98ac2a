#include "tools/terminal/cZoom.h"

#include <algorithm>
#include <vector>

#include "tools/output/readings.h"

namespace tool {

namespace {

constexpr std::size_t OUTLIER_SHARE = 20;  // one reading in so many may lie outside
constexpr double HYSTERESIS = 1.2;

double distanceThatMatters(const std::vector<cReading>& readings) {
  std::vector<double> distances;
  distances.reserve(readings.size());
  for (const cReading& reading : readings) distances.push_back(reading.distance);
  const auto last =
      distances.end() - 1 - static_cast<std::ptrdiff_t>(distances.size() / OUTLIER_SHARE);
  std::nth_element(distances.begin(), last, distances.end());
  return *last;
}

}  // namespace

void cZoom::follow(const tarvo::cLaserScan& scan) {
  const auto readings = readingsOf(scan);
  if (!isFitting || readings.empty()) return;
  const double distance = distanceThatMatters(readings);
  const cPolarScale enough = cPolarScale::covering(distance);
  const cPolarScale ample = cPolarScale::covering(distance * HYSTERESIS);
  if (enough.getReach() > scale.getReach() || ample.getReach() < scale.getReach()) scale = ample;
}

}  // namespace tool
