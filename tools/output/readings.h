#pragma once

#include <vector>

#include "tarvoscan/tarvoscan.h"

namespace tool {

/// A point of a scan that is a distance, no code of the sensor's.
struct cReading {
  double distance;  ///< millimetres
  double angle;     ///< radians, anti-clockwise from the front
};

/// The angle of a scan's point, radians.
inline double angleOf(const tarvo::cLaserScan& scan, std::size_t point) {
  return scan.angleMin + static_cast<double>(point) * scan.angleIncrement;
}

/// Those of `scan`, in its order.
std::vector<cReading> readingsOf(const tarvo::cLaserScan& scan);

}  // namespace tool
