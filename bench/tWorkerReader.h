#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <utility>

#include "bench/iReader.h"

/// Receives in a thread of its own, which hands each record to the caller and wakes it
/// (std::condition_variable): the least cost of a reader whose caller does other things meanwhile.
template <typename tRecord>
class tWorkerReader : public iReader {
 public:
  /// `receive` blocks until the next record. It runs in the worker, which looks whether it is to
  /// end after each one.
  explicit tWorkerReader(std::function<tRecord()> receive)
      : receive(std::move(receive)), worker([this] { work(); }) {}

  ~tWorkerReader() override {
    isEnding = true;
    worker.join();
  }

  void take() override {
    std::unique_lock<std::mutex> lock(mutex);
    const auto isDue = [this] { return !waiting.empty() || failure; };
    if (!changed.wait_for(lock, std::chrono::milliseconds(TIMEOUT), isDue)) {
      throw std::runtime_error("no scan arrived in time");
    }
    if (waiting.empty()) std::rethrow_exception(failure);
    taken = std::move(waiting.front());
    waiting.pop_front();
  }

 private:
  void work() {
    try {
      while (!isEnding) publish(receive());
    } catch (...) {
      const std::lock_guard<std::mutex> guard(mutex);
      failure = std::current_exception();
      changed.notify_one();
    }
  }

  void publish(tRecord record) {
    const std::lock_guard<std::mutex> guard(mutex);
    waiting.push_back(std::move(record));
    changed.notify_one();
  }

  const std::function<tRecord()> receive;
  tRecord taken;  // the caller's
  std::atomic<bool> isEnding{false};
  std::mutex mutex;  // guards all below but the worker
  std::condition_variable changed;
  std::deque<tRecord> waiting;
  std::exception_ptr failure;  // what ended the worker
  std::thread worker;          // last: it uses all above
};
