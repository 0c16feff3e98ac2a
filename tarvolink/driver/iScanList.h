#pragma once

#include <boost/shared_ptr.hpp>

#include "tarvolink/export.h"
#include "tarvolink/scan/cScan.h"

/// The scans that a driver keeps for the caller. Taking removes; a scan taken is the
/// caller's and outlives list and driver. An empty pointer: there was none. Any thread.
class TARVOLINK_API iScanList {
 public:
  virtual int getScanNum() = 0;                              ///< number of scans waiting
  virtual boost::shared_ptr<cScan> getScanLast() = 0;        ///< takes the newest
  virtual boost::shared_ptr<cScan> getScanLast(int i) = 0;   ///< see the drivers
  virtual boost::shared_ptr<cScan> getScanFirst() = 0;       ///< takes the oldest
  virtual boost::shared_ptr<cScan> getScanFirst(int i) = 0;  ///< see the drivers
  virtual void purgeScan() = 0;                              ///< see the drivers

 protected:
  ~iScanList() = default;
};
