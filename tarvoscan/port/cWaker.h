#pragma once

#include <atomic>
#include <chrono>

#include "tarvoscan/port/cDescriptor.h"

namespace tarvo {

/// What wakes a reading thread out of poll(2): a request to stop, which stays, or work to look at,
/// which is taken back once seen. Two descriptors, since the second must not end a read within a
/// record.
class cWaker {
 public:
  cWaker();
  cWaker(const cWaker&) = delete;
  cWaker& operator=(const cWaker&) = delete;

  /// Whether the system had two descriptors left.
  bool isUsable() const { return stopEvent.get() >= 0 && workEvent.get() >= 0; }

  /// Any thread. Async-signal-safe.
  void requestStop() noexcept;
  bool isStopRequested() const noexcept { return stopping; }
  /// Makes it usable for the next start. No thread may wait on it.
  void reset();

  void wake() noexcept;      ///< there is work. Any thread.
  void takeWake() noexcept;  ///< it has been seen. The woken thread.

  int getStopDescriptor() const { return stopEvent.get(); }
  int getWorkDescriptor() const { return workEvent.get(); }

  /// Sleeps for `time`, or until it is woken by either.
  void sleep(std::chrono::milliseconds time) const;

 private:
  const cDescriptor stopEvent;
  const cDescriptor workEvent;
  std::atomic<bool> stopping{false};
};

}  // namespace tarvo
