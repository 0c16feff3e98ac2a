#pragma once

#include <boost/shared_ptr.hpp>

#include "tarvolink/export.h"
#include "tarvolink/scip1/cSensorDriverSCIP1.h"

/// A SCIP 1.x sensor with the three-character protocol (`cSensorDriverManager::protoId` 4), whose
/// distances go beyond 4095 mm. Nothing in the library makes one. `doScan` decodes two characters
/// here, too: send "G" with `doRaw` and decode with `addScan`.
class TARVOLINK_API cSensorDriverSCIP1z : public cSensorDriverSCIP1 {
 public:
  using cSensorDriverSCIP1::cSensorDriverSCIP1;

  /// Decodes the latest record, distances of three characters in lines of 64, into a scan in the
  /// list. The scan's three angles are degrees, not radians. Empty, with a message, for a line
  /// of another length (standard output) or another number of points (standard error). Any thread.
  boost::shared_ptr<cScan> addScan(int start, int end, int cluster);

 private:
  boost::shared_ptr<cScan> decode(int start, int end, int cluster);
  bool addLines(long long remaining);
};
