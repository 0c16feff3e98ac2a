#pragma once

#include <boost/shared_ptr.hpp>
#include <vector>

#include "tarvolink/export.h"
#include "tarvolink/scan/cScan.h"

/// Fills a scan with decoded distances. One caller at a time.
class TARVOLINK_API cScanFactory {
 public:
  /// The point at distance `value` (millimetres) and `angle` (radians). Any thread.
  static cScanPoint genPoint(int value, double angle);

  /// Appends one point for each value to `scan`, which must be set (assertion) unless `values` is
  /// empty. Point i of the scan lies at the first angle + i * the step, so a scan may be filled
  /// line by line. Nothing is filtered.
  void addData(std::vector<int> values);

  boost::shared_ptr<cScan> scan;  ///< the scan being filled
};
