#include "tools/cZoom.h"

#include <algorithm>
#include <vector>

namespace tool {

namespace {

constexpr std::size_t LEFT_OUT = 20;  // one reading in so many may lie outside
constexpr double TO_SPARE = 1.2;

double distanceThatMatters(const cScan& readings) {
  std::vector<double> distances;
  for (const cScanPoint& point : readings.points) distances.push_back(point.distance);
  const auto last = distances.end() - 1 - static_cast<std::ptrdiff_t>(distances.size() / LEFT_OUT);
  std::nth_element(distances.begin(), last, distances.end());
  return *last;
}

}  // namespace

void cZoom::follow(const cScan& readings) {
  if (!isFitting || readings.points.empty()) return;
  const double distance = distanceThatMatters(readings);
  const cPolarScale enough = cPolarScale::reaching(distance);
  const cPolarScale ample = cPolarScale::reaching(distance * TO_SPARE);
  if (enough.getReach() > scale.getReach() || ample.getReach() < scale.getReach()) scale = ample;
}

}  // namespace tool
