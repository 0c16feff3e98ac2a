#include "tarvolink/base/cBSync.h"

#include <algorithm>
#include <boost/chrono.hpp>
#include <boost/thread/thread.hpp>

namespace kavTBX {

void cBSync::unblock() {
  // Notifies under the lock: a waiter may destroy this object as soon as its wait has returned.
  boost::mutex::scoped_lock lock(mutex);
  signalled = true;
  condition.notify_all();
}

void cBSync::reset() {
  boost::mutex::scoped_lock lock(mutex);
  signalled = false;
}

void cBSync::wait() {
  // A host's boost::thread::interrupt would otherwise throw out of the driver's calls.
  boost::this_thread::disable_interruption uninterrupted;
  boost::mutex::scoped_lock lock(mutex);
  while (!signalled) condition.wait(lock);
}

void cBSync::wait_and_reset() {
  boost::this_thread::disable_interruption uninterrupted;
  boost::mutex::scoped_lock lock(mutex);
  while (!signalled) condition.wait(lock);
  signalled = false;
}

bool cBSync::wait_and_reset(int timeout) {
  // pthread_cond_timedwait refuses a deadline before the clock's zero.
  const boost::chrono::milliseconds limit(std::max(timeout, 0));
  const auto deadline = boost::chrono::steady_clock::now() + limit;
  boost::this_thread::disable_interruption uninterrupted;
  boost::mutex::scoped_lock lock(mutex);
  while (!signalled) {
    if (condition.wait_until(lock, deadline) == boost::cv_status::timeout && !signalled) {
      return false;
    }
  }
  signalled = false;
  return true;
}

}  // namespace kavTBX
