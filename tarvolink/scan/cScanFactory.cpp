#include "tarvolink/scan/cScanFactory.h"

cScanPoint cScanFactory::genPoint(int value, double angle) {
  return {static_cast<double>(value), angle};
}

void cScanFactory::addData(std::vector<int> values) {
  if (values.empty()) return;
  cScan& filled = *scan;
  for (const int value : values) {
    const auto i = static_cast<double>(filled.points.size());
    filled.points.push_back(genPoint(value, filled.firstAngle + i * filled.angleStep));
  }
}
