#pragma once

#include <boost/thread/condition.hpp>
#include <boost/thread/mutex.hpp>
#include <cstdint>
#include <deque>

namespace kavTBX {

/// The mailbox of a worker thread: an unbounded first-in, first-out queue of values of type T,
/// which is copied in and out.
///
/// Any number of threads post; one worker takes, on the public members: lock `mutex`, wait
/// on `cond` while `queue` is empty, copy and pop the front, unlock, then act on the item.
/// The mutex is held for the append or the removal, and where a worker needs it for what it
/// disposes of or for a change of its state, but not for its work: a poster never waits for a
/// sensor. Destroying the queue drops what is left in it unprocessed.
template <typename T>
class cMessQueue {
 public:
  cMessQueue() = default;
  cMessQueue(const cMessQueue&) = delete;
  cMessQueue& operator=(const cMessQueue&) = delete;
  virtual ~cMessQueue() = default;

  /// Appends `item` and wakes the taker. Any thread.
  void post(T item) {
    boost::mutex::scoped_lock lock(mutex);
    queue.push_back(item);
    cond.notify_all();
  }

  /// Like `post`, but false, with nothing appended, once `close` was called. Any thread.
  bool postIfOpen(T item) {
    boost::mutex::scoped_lock lock(mutex);
    if (closed != 0) return false;
    queue.push_back(item);
    cond.notify_all();
    return true;
  }

  /// Closes the queue for `postIfOpen`, gives what is left in it to `dispose` in order, and
  /// drops it, all under the mutex. Allocates nothing. Any thread.
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
