#include "tarvolink/scan/cScanFactory.h"

cScanPoint cScanFactory::genPoint(int value, double angle) {
  return {static_cast<double>(value), angle};
}

void cScanFactory::addData(std::vector<int> values) {
  if (values.empty()) return;
  std::vector<cScanPoint>& points = scan->points;
  const double firstAngle = scan->firstAngle;
  const double angleStep = scan->angleStep;
  const auto before = static_cast<double>(points.size());
  points.resize(points.size() + values.size());
  cScanPoint* const added = points.data() + points.size() - values.size();
  const int count = static_cast<int>(values.size());
  for (int i = 0; i < count; ++i) {
    added[i] = genPoint(values[static_cast<std::size_t>(i)], firstAngle + (before + i) * angleStep);
  }
}
