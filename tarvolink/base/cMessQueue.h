#pragma once

#include <boost/thread/condition.hpp>
#include <boost/thread/mutex.hpp>
#include <cstdint>
#include <deque>

namespace kavTBX {

/// The mailbox of a worker thread: an unbounded first-in, first-out queue of values of type T.
///
/// Any number of threads post. One worker takes, through the public members: it locks `mutex`,
/// waits on `cond` while `queue` is empty, copies and pops the front, unlocks, and then acts on
/// the item. The mutex is never held during that work, so a poster never waits for a sensor.
/// Destroying the queue drops the items left in it; it does not process them.
template <typename T>
class cMessQueue {
 public:
  cMessQueue() = default;
  cMessQueue(const cMessQueue&) = delete;
  cMessQueue& operator=(const cMessQueue&) = delete;
  virtual ~cMessQueue() = default;

  /// Appends a copy of `item` and wakes the worker. Any thread.
  void post(T item) {
    boost::mutex::scoped_lock lock(mutex);
    queue.push_back(item);
    cond.notify_all();
  }

  /// Like `post`, unless the queue is closed: then it appends nothing and returns false. Any
  /// thread.
  bool postIfOpen(T item) {
    boost::mutex::scoped_lock lock(mutex);
    if (closed != 0) return false;
    queue.push_back(item);
    cond.notify_all();
    return true;
  }

  /// Closes the queue to `postIfOpen`, passes each item left in it to `dispose`, oldest first, and
  /// drops them, all under the mutex. Allocates nothing. Any thread.
  template <typename Dispose>
  void close(Dispose dispose) {
    boost::mutex::scoped_lock lock(mutex);
    closed = 1;
    for (T& item : queue) dispose(item);
    queue.clear();
  }

  std::deque<T> queue;  ///< the waiting items, oldest at the front; under `mutex`
  boost::mutex mutex;   ///< guards the queue

 private:
  std::int32_t closed = 0;  // under `mutex`

 public:
  boost::condition cond;  ///< notified after every post
};

}  // namespace kavTBX
