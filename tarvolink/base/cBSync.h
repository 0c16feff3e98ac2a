#pragma once

#include <boost/thread/condition.hpp>
#include <boost/thread/mutex.hpp>

#include "tarvolink/export.h"

namespace kavTBX {

/// A binary signal: one thread raises it, another waits for it.
///
/// Signals do not count up: two `unblock` calls before one wait release one wait.
/// Any thread, for every operation. Do not destroy it while a thread waits on it. A waiter may
/// destroy it as soon as its own wait has returned: `unblock` notifies with the mutex held and
/// touches nothing after releasing it. No wait is a Boost interruption point.
class TARVOLINK_API cBSync {
 public:
  cBSync() = default;
  cBSync(const cBSync&) = delete;
  cBSync& operator=(const cBSync&) = delete;

  /// Raises the signal and wakes all waiters.
  void unblock();

  /// Clears the signal.
  void reset();

  /// Blocks until the signal is raised; leaves it raised.
  void wait();

  /// Blocks until the signal is raised, then clears it in the same step.
  void wait_and_reset();

  /// Like `wait_and_reset()`, for at most `timeout` milliseconds; 0 or less does not wait.
  /// True: the signal was raised, before or during the wait, and is now clear. False: time-out.
  /// Setting the wall clock does not change the length of the wait (CLOCK_MONOTONIC).
  bool wait_and_reset(int timeout);

 private:
  boost::condition condition;
  boost::mutex mutex;
  bool signalled = false;
};

}  // namespace kavTBX
