#pragma once

#include <boost/shared_ptr.hpp>

#include "tarvolink/export.h"
#include "tarvolink/scan/cScan.h"

/// The scans that a driver keeps for the caller. Taking removes; a scan taken is the
/// caller's and outlives list and driver. An empty pointer: there was none. No operation waits
/// for the sensor.
///
/// With SCIP 2.0 those that look at the list first turn what has arrived into scans, and throw
/// std::out_of_range for a record with right sums and a wrong shape; it is lost, nothing else.
/// Scans are in the order in which they were taken as long as one thread asks for them.
class TARVOLINK_API iScanList {
 public:
  virtual int getScanNum() = 0;                        ///< number of scans waiting. Any thread.
  virtual boost::shared_ptr<cScan> getScanLast() = 0;  ///< takes the newest. Any thread.
  /// SCIP 1.x: takes the oldest if `i` is the number of scans less 1, else empty. SCIP 2.0:
  /// always empty. Any thread.
  virtual boost::shared_ptr<cScan> getScanLast(int i) = 0;
  virtual boost::shared_ptr<cScan> getScanFirst() = 0;  ///< takes the oldest. Any thread.
  /// SCIP 1.x: takes the scan at place `i`, the oldest being 0, empty if there is none. SCIP 2.0:
  /// always empty. Any thread.
  virtual boost::shared_ptr<cScan> getScanFirst(int i) = 0;
  /// SCIP 1.x: removes all scans. SCIP 2.0: does nothing; take them one by one. Any thread.
  virtual void purgeScan() = 0;

 protected:
  ~iScanList() = default;
};
