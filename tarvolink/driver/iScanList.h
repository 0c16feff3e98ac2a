#pragma once

#include <boost/shared_ptr.hpp>

#include "tarvolink/export.h"
#include "tarvolink/scan/cScan.h"

/// The scans that a driver keeps for the caller. Taking a scan removes it from the list; it belongs
/// to the caller and outlives list and driver. An empty pointer: there was none. No operation waits
/// for the sensor.
///
/// With SCIP 2.0, `getScanNum`, `getScanFirst()` and both `getScanLast` first convert the records
/// that have arrived. They throw std::out_of_range for a record with correct checksums but the
/// wrong shape; only that record is lost. Scans stay in the order in which the sensor took them as
/// long as one thread asks for them.
class TARVOLINK_API iScanList {
 public:
  virtual int getScanNum() = 0;                        ///< number of scans waiting. Any thread.
  virtual boost::shared_ptr<cScan> getScanLast() = 0;  ///< takes the newest. Any thread.
  /// SCIP 1.x: takes the oldest if `i` is the number of scans less 1; otherwise empty. SCIP 2.0:
  /// always empty. Any thread.
  virtual boost::shared_ptr<cScan> getScanLast(int i) = 0;
  virtual boost::shared_ptr<cScan> getScanFirst() = 0;  ///< takes the oldest. Any thread.
  /// SCIP 1.x: takes the scan at place `i`, the oldest being 0; empty if there is none. SCIP 2.0:
  /// always empty. Any thread.
  virtual boost::shared_ptr<cScan> getScanFirst(int i) = 0;
  /// SCIP 1.x: removes all scans. SCIP 2.0: does nothing, so take them one by one. Any thread.
  virtual void purgeScan() = 0;

 protected:
  ~iScanList() = default;
};
