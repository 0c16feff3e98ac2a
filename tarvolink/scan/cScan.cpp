#include "tarvolink/scan/cScan.h"

cScan::cScan(double firstAngle, double lastAngle, double angleStep)
    : firstAngle(firstAngle), lastAngle(lastAngle), angleStep(angleStep) {
  // A cluster of 0 makes the step 0 and the quotient infinite or not a number.
  constexpr double MAX_POINTS = 65536;
  const double quotient = (lastAngle - firstAngle) / angleStep;
  if (quotient >= 0 && quotient <= MAX_POINTS) points.reserve(static_cast<std::size_t>(quotient));
}
