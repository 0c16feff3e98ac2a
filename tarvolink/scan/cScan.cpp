#include "tarvolink/scan/cScan.h"

cScan::cScan(double first, double last, double step)
    : firstAngle(first), lastAngle(last), angleStep(step) {
  // A cluster of 0 makes the step 0 and the quotient infinite or no number.
  constexpr double MOST_POINTS = 65536;
  const double quotient = (lastAngle - firstAngle) / angleStep;
  if (quotient >= 0 && quotient <= MOST_POINTS) points.reserve(static_cast<std::size_t>(quotient));
}
