#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>

#include "tarvoscan/cLaserScan.h"
#include "tarvoscan/cSubscription.h"
#include "tarvoscan/export.h"

namespace tarvo {

/// What scans come from: a sensor (`cScanner`), or anything else that yields them. Any thread, for
/// every operation.
class TARVOSCAN_API iScanSource {
 public:
  virtual ~iScanSource() = default;

  /// A place of its own for up to `depth` scans (at least 1) that nobody has taken yet; the newest
  /// win.
  virtual cSubscription subscribe(std::size_t depth) = 0;

  /// Calls `callback` with each scan, in the thread that reads it, until the result is destroyed;
  /// then no call is under way any more, unless it was destroyed within one. A callback must return
  /// soon: the next scan waits for it. One that throws is called no more.
  virtual std::shared_ptr<void> subscribe(std::function<void(const tScanPtr&)> callback) = 0;

  /// Takes the oldest scan that nobody has taken here, waiting up to `timeout` for one: the
  /// source's own subscription, for hosts that need one place only. It keeps the newest 16. Empty:
  /// none came in time, or the source has stopped.
  virtual tScanPtr next(std::chrono::milliseconds timeout) = 0;
};

}  // namespace tarvo
