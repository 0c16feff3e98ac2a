#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>

/// What became of the scans that all sensors sent. Any thread.
class cTally {
 public:
  void addDelivered();
  void addUntrue();                           ///< delivered, and not what was measured
  void addTold(std::uint64_t count);          ///< delivered with another number of points
  void addLost(const char* fault = nullptr);  ///< to that fault; nullptr: while none was on
  /// Some came, each as it was measured, and none was lost without a fault.
  bool isSound() const;
  std::string describe() const;

 private:
  mutable std::mutex mutex;
  std::uint64_t delivered = 0;  // this and those below: under mutex
  std::uint64_t untrue = 0;
  std::uint64_t told = 0;
  std::uint64_t unexplained = 0;
  std::map<std::string, std::uint64_t> lost;
};
