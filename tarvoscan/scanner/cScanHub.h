#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "tarvoscan/cLaserScan.h"
#include "tarvoscan/cSubscription.h"
#include "tarvoscan/port/cDescriptor.h"

namespace tarvo {

/// The scans that wait for one taker. Any thread.
class cScanQueue {
 public:
  explicit cScanQueue(std::size_t depth) : depth(depth) {}

  /// Adds a scan; the oldest makes room. True where one had to.
  bool push(const tScanPtr& scan);
  tScanPtr next(std::chrono::milliseconds timeout);
  tScanPtr latest();
  int getDescriptor();
  std::uint64_t getDropped() const;

  /// While it is closed nobody waits.
  void setClosed(bool on);
  bool isClosed() const;

 private:
  tScanPtr take();
  void signal();

  const std::size_t depth;
  mutable std::mutex mutex;         // guards all below
  std::condition_variable changed;  // a scan came, or it was closed
  std::deque<tScanPtr> scans;       // oldest first
  std::uint64_t dropped = 0;
  bool closed = false;
  cDescriptor event;  // readable while a scan waits; made when it is first asked for
  bool isSignalled = false;
};

/// Hands each scan of a source to its subscriptions. Subscriptions come and go in any thread; one
/// thread publishes.
class cScanHub {
 public:
  std::shared_ptr<cScanQueue> subscribe(std::size_t depth);
  std::shared_ptr<void> subscribe(std::function<void(const tScanPtr&)> callback);

  /// The scan goes to all; how many had no room for it.
  std::uint64_t publish(const tScanPtr& scan);

  /// Whether scans come; while they do not, nobody waits for one.
  void setOpen(bool on);

  /// Scans that subscriptions, also former ones, had no room for.
  std::uint64_t getDropped() const { return dropped; }

 private:
  class cCallback;

  std::vector<std::shared_ptr<cCallback>> getCallbacks();

  std::mutex
      mutex;  // guards the three below; taken before a queue's, never held while a callback runs
  std::vector<std::weak_ptr<cScanQueue>> queues;
  std::vector<std::weak_ptr<cCallback>> callbacks;
  bool isOpen = false;
  std::atomic<std::uint64_t> dropped{0};
};

}  // namespace tarvo
