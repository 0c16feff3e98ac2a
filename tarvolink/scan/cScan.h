#pragma once

#include <vector>

#include "tarvolink/base/cTime.h"
#include "tarvolink/export.h"

/// One measurement of a scan. A plain value: one caller at a time.
struct cScanPoint {
  /// Millimetres as the sensor reported them; small values are its error codes, kept as
  /// they are.
  double distance;
  /// Radians from the sensor's front, anti-clockwise.
  double angle;
};

/// The points of one sweep of the sensor. Filled before it is handed out and not changed
/// afterwards: then any thread may read it. Its angles are radians, but degrees in a scan of
/// `cSensorDriverSCIP1z`.
class TARVOLINK_API cScan {
 public:
  /// An empty scan with the default time stamp and these angles, in the unit told above. Room is
  /// made for the points between the two angles where their number is finite and sane (0 to 65536).
  cScan(double firstAngle, double lastAngle, double angleStep);

  std::vector<cScanPoint> points;  ///< in the order of the sweep
  kavTBX::cTime timeStamp;         ///< local time at which the scan was received
  double firstAngle;               ///< angle of the first point, radians
  /// Angle of the last step asked for, radians; a cluster's point lies at the cluster's first step.
  double lastAngle;
  double angleStep;  ///< angle between two points, radians; 0 for a cluster of 0
};
