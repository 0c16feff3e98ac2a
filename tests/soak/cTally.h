#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>

/// What became of the scans that all sensors sent. Any thread.
class cTally {
 public:
  void addDelivered();
  void addWrong();                            ///< delivered, but not what was measured
  void addFlagged(std::uint64_t count);       ///< delivered with another number of points
  void addLost(const char* fault = nullptr);  ///< while that fault was on; nullptr: while none was
  void addStuck();                            ///< a scanner that did not come back from a fault
  /// Some scans were delivered, each as measured, none was lost without a fault, and every scanner
  /// came back.
  bool passed() const;
  std::string describe() const;

 private:
  mutable std::mutex mutex;
  std::uint64_t delivered = 0;  // this and those below: under mutex
  std::uint64_t wrong = 0;
  std::uint64_t flagged = 0;
  std::uint64_t unexplained = 0;
  std::uint64_t stuck = 0;
  std::map<std::string, std::uint64_t> lost;
};
