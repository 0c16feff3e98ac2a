#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "sim/cSimRecord.h"
#include "sim/cSimSensor.h"

/// What has happened, for those who wait for it. Any thread.
class cSimLog {
 public:
  static constexpr std::size_t MOST = 65536;  ///< commands kept, and scan numbers kept

  void heard(std::size_t bytes);
  void heardCommand(const std::string& line);
  void wrote(std::size_t bytes);
  void ended(const cSimRecord& record);
  void skippedScans(std::uint64_t count);
  void droppedAnswer();

  std::vector<std::uint32_t> getSentScans() const;
  std::vector<std::string> getCommands() const;
  cSimCounters getCounters() const;

  using cTimeOut = std::chrono::milliseconds;
  /// Waits until the counter has reached `count`; whether it has.
  bool waitFor(std::uint64_t cSimCounters::*counter, std::uint64_t count, cTimeOut timeOut) const;
  bool waitForCommand(const std::string& prefix, std::size_t count, cTimeOut timeOut) const;

 private:
  /// Changes something under the lock and wakes all who wait.
  template <class tChange>
  void change(tChange what) {
    std::lock_guard<std::mutex> lock(mutex);
    what();
    changed.notify_all();
  }

  mutable std::mutex mutex;
  mutable std::condition_variable changed;
  cSimCounters counters;
  std::deque<std::uint32_t> scans;
  std::deque<std::string> commands;
};
