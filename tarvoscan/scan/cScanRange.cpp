#include "tarvoscan/scan/cScanRange.h"

#include "tarvolink/tarvolink.h"

namespace tarvo {

std::size_t cScanRange::getPoints() const {
  return static_cast<std::size_t>((lastStep - firstStep) / cluster) + 1;
}

std::string cScanRange::getCommand(bool isOdd) const {
  constexpr int ENDLESS = 0;
  if (isScip2) {
    return cSensorDriverSCIP2::makeScanCommand(firstStep, lastStep, cluster, skippedTurns, ENDLESS,
                                               maxDistance);
  }
  return cSensorDriverSCIP1::makeScanCommand(firstStep, lastStep,
                                             cluster == 1 && isOdd ? 0 : cluster);
}

}  // namespace tarvo
