#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <mutex>

#include "tarvoscan/cHealth.h"
#include "tarvoscan/scan/cScanMaker.h"

namespace tarvo {

/// Where the reading thread notes how it is, and any thread reads it.
class cHealthBoard {
 public:
  /// `onChange` may be empty.
  explicit cHealthBoard(std::function<void(const cHealth&)> onChange)
      : onChange(std::move(onChange)) {}

  cHealth get() const;
  eState getState() const;

  // The reading thread.
  void setState(eState state, const cProblem& problem = {});  ///< calls `onChange` if either is new
  void setSensor(std::shared_ptr<const cSensorInfo> sensor);
  void countReconnect();
  void countDelivered(const cLaserScan& scan, const cScanMaker& maker);
  void countDamaged();
  void countLost();  ///< a request that nothing answered (SCIP 1.x)
  void setLineRate(double scansPerSecond);

  void countFailedCommand();  ///< any thread
  void setDropped(std::uint64_t count);

  /// Before the next start: nothing is known any more but the counters.
  void reset();

 private:
  double getRate(std::int64_t now) const;

  const std::function<void(const cHealth&)> onChange;
  mutable std::mutex mutex;  // guards all below
  cHealth health;
  std::deque<std::int64_t> arrivals;  // of the last two seconds' scans, nanoseconds
  std::int64_t lastArrival = 0;       // 0: none yet
  std::uint64_t damagedInARow = 0;    // since the latest good scan
  std::int64_t utcOffset = 0;         // of the latest scan
};

}  // namespace tarvo
