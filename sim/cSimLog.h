#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "sim/cSimRecord.h"
#include "sim/cSimSensor.h"

/// Counts and records what happens, for callers that ask or wait for it. Any thread.
class cSimLog {
 public:
  /// Commands kept, and scan numbers kept: hours of a test, and a bound for a sensor that runs for
  /// a year.
  static constexpr std::size_t MAX_ENTRIES = 65536;

  void addReceived(std::size_t bytes);
  void addCommand(const std::string& line);
  void addWritten(std::size_t bytes);
  void addRecord(const cSimRecord& record);
  void addSkippedScans(std::uint64_t count);
  void addDroppedAnswer();

  std::vector<std::uint32_t> getSentScans() const;
  std::vector<std::string> getCommands() const;
  cSimCounters getCounters() const;

  using cTimeOut = std::chrono::milliseconds;
  /// As cSimSensor::waitFor and waitForCommand.
  bool waitFor(std::uint64_t cSimCounters::*counter, std::uint64_t count, cTimeOut timeOut) const;
  bool waitForCommand(const std::string& prefix, std::size_t count, cTimeOut timeOut) const;

 private:
  /// Runs `what` under the lock and wakes all waiting callers.
  template <class tChange>
  void change(tChange what) {
    std::lock_guard<std::mutex> lock(mutex);
    what();
    changed.notify_all();
  }

  mutable std::mutex mutex;  ///< guards all below
  mutable std::condition_variable changed;
  cSimCounters counters;
  std::deque<std::uint32_t> scans;
  std::deque<std::string> commands;
};
