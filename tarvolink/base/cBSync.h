#pragma once

#include <boost/thread/condition.hpp>
#include <boost/thread/mutex.hpp>

#include "tarvolink/export.h"

namespace kavTBX {

/// A binary signal: one thread raises it, another waits for it.
///
/// Signals do not count up: two `unblock` calls before one wait release one wait.
/// Any thread, for every operation. It must not be destroyed while a thread waits
/// on it, but a waiter may destroy it as soon as its own wait has returned: `unblock`
/// notifies with the mutex held and touches nothing after releasing it.
/// No wait is a Boost interruption point.
class TARVOLINK_API cBSync {
 public:
  cBSync() = default;
  cBSync(const cBSync&) = delete;
  cBSync& operator=(const cBSync&) = delete;

  /// Raises the signal and wakes all waiters.
  void unblock();

  /// Takes the signal back.
  void reset();

  /// Blocks until the signal is raised; leaves it raised.
  void wait();

  /// Blocks until the signal is raised, then takes it back in the same step.
  void wait_and_reset();

  /// Like `wait_and_reset()`, for at most `timeout` milliseconds (0 or less only looks).
  /// True: the signal came, or was there already, and was taken back. False: it did not.
  /// Setting the wall clock neither prolongs nor shortens the wait (CLOCK_MONOTONIC).
  bool wait_and_reset(int timeout);

 private:
  boost::condition condition;
  boost::mutex mutex;
  bool signalled = false;
};

}  // namespace kavTBX
