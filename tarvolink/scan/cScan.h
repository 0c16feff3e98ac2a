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

/// The points of one sweep of the sensor. A driver fills it before handing it out and does not
/// change it afterwards, so any thread may read it. Angles are radians, except in a scan of
/// `cSensorDriverSCIP1z`: degrees.
class TARVOLINK_API cScan {
 public:
  /// A scan without points, with the default time stamp. Reserves room for the points between the
  /// two angles if their number is plausible (0 to 65536).
  cScan(double firstAngle, double lastAngle, double angleStep);

  std::vector<cScanPoint> points;  ///< in the order of the sweep
  kavTBX::cTime timeStamp;         ///< local time at which the scan was received
  double firstAngle;               ///< angle of the first point, radians
  /// Angle of the last step asked for, radians. A cluster's point lies at the cluster's first step.
  double lastAngle;
  double angleStep;  ///< angle between two points, radians; 0 for a cluster of 0
};
