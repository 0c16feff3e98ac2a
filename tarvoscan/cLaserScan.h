#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "tarvoscan/cSensorInfo.h"

namespace tarvo {

/// One scan of a sensor. Made by the library and never changed afterwards: any thread may read it,
/// and it outlives the scanner that it came from.
///
/// Angles are radians, anti-clockwise, 0 straight ahead. Point i lies at `angleMin + i *
/// angleIncrement`; a cluster's angle is that of its first step.
///
/// **Stamps.** A sensor's mirror passes step 0 at the beginning of a turn; a SCIP 2.0 sensor is
/// assumed to read its clock at the turn's end. The stamp of the first ray is that reading, less
/// the part of the turn behind the first step, on the host's monotonic clock: the scanner keeps the
/// offset between both clocks (the least delay of the last ten seconds), so that the line's jitter
/// does not show. The least delay itself is in the stamp. SCIP 1.x has no clock: there the stamp is
/// the arrival of the answer's first byte, less the turn.
struct cLaserScan {
  /// The turn of the sensor, counted from the first scan of the scanner's life. Turns that were
  /// left out on purpose, lost or damaged leave a gap as far as the sensor's clock shows it.
  /// SCIP 1.x: the request.
  std::uint64_t number = 0;

  std::int64_t arrivalMonotonic =
      0;                        ///< when the first byte was read: CLOCK_MONOTONIC, nanoseconds
  std::int64_t arrivalUtc = 0;  ///< the same in nanoseconds since 1970-01-01 UTC
  std::int64_t stampMonotonic =
      0;                      ///< when the first ray was measured: CLOCK_MONOTONIC, nanoseconds
  std::int64_t stampUtc = 0;  ///< the same in nanoseconds since 1970-01-01 UTC
  std::optional<std::uint32_t>
      sensorClock;  ///< the sensor's own, 24 bits of milliseconds; SCIP 1.x: none

  double angleMin = 0;        ///< of the first point
  double angleMax = 0;        ///< of the last point
  double angleIncrement = 0;  ///< from one point to the next
  double timeIncrement = 0;   ///< seconds from one point to the next
  double scanTime = 0;        ///< seconds from one scan to the next; 0: not known
  double rangeMin = 0;        ///< metres: the sensor's shortest valid distance
  double rangeMax = 0;        ///< metres: its longest, or the longest asked for

  std::vector<int> distances;  ///< millimetres as the sensor reported them, its codes included
  /// The same in metres: NaN below `rangeMin` (a code of the sensor's), +Inf above `rangeMax`; see
  /// `cScannerOptions` for codes that mean "nothing in range" or "too near".
  std::vector<float> ranges;

  std::shared_ptr<const cSensorInfo> sensor;  ///< never empty
};

/// How scans are handed around.
using tScanPtr = std::shared_ptr<const cLaserScan>;

}  // namespace tarvo
