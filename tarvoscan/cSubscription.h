#pragma once

#include <chrono>
#include <cstdint>
#include <memory>

#include "tarvoscan/cLaserScan.h"
#include "tarvoscan/export.h"

namespace tarvo {

class cScanQueue;

/// A place where scans wait for one taker: up to as many as it was made for, the newest. Several
/// subscriptions of a source get every scan each. Made by `iScanSource::subscribe`; destroying it
/// ends it. It may outlive its source: then no scan comes any more.
///
/// Any thread, for every operation; two threads that take share the scans between them.
class TARVOSCAN_API cSubscription {
 public:
  /// For sources: takes from `queue`, which they fill.
  explicit cSubscription(std::shared_ptr<cScanQueue> queue);
  cSubscription(cSubscription&&) noexcept;             ///< the other one is not to be used any more
  cSubscription& operator=(cSubscription&&) noexcept;  ///< as above; ends this one's own
  cSubscription(const cSubscription&) = delete;
  cSubscription& operator=(const cSubscription&) = delete;
  ~cSubscription();

  /// Takes the oldest scan, waiting up to `timeout` for one (0 only looks). Empty: none came in
  /// time, or none waits and the source is stopped.
  tScanPtr next(std::chrono::milliseconds timeout);

  /// Takes the newest scan and forgets the older ones, which do not count as dropped. Does not
  /// wait.
  tScanPtr latest();

  /// A descriptor that is readable while a scan waits (eventfd(2)), for poll(2) and its like; the
  /// subscription's own: do not read or close it. -1: the system has none left.
  int getDescriptor();

  /// Scans that had to make room for newer ones.
  std::uint64_t getDropped() const;

  /// Whether no scan will come unless the source is started again: it is stopped, or was destroyed.
  bool isEnded() const;

 private:
  std::shared_ptr<cScanQueue> queue;
};

}  // namespace tarvo
