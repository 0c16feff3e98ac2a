#pragma once

#include <chrono>
#include <random>
#include <vector>

#include "soak/cTally.h"
#include "tests/support/driving.h"

/// One sensor and its driver, from opening to the end, with faults that come and go. The thread
/// that made it.
class cLife {
 public:
  using cClock = std::chrono::steady_clock;

  /// Throws std::runtime_error when the sensor, healthy as it is, does not scan.
  cLife(std::mt19937& lots, cTally& counted);
  /// Counts what did not come, each scan by its reason.
  ~cLife();
  cLife(const cLife&) = delete;
  cLife& operator=(const cLife&) = delete;

  /// Some faults one after the other, until `end` at the latest, and then a pulled cable or a stop.
  void live(cClock::time_point end);

 private:
  /// The scans that a fault may have harmed.
  struct cWindow {
    const char* fault;
    std::uint64_t first, last;
  };

  void bear(eSimFault fault);
  void finish();
  void take(int milliseconds);
  void judge(const std::vector<int>& distances);
  void deliver(std::uint64_t scan);
  const char* findFault(std::uint64_t scan) const;

  std::mt19937& random;
  cTally& tally;
  cSimSensor sensor;
  tDriver2 driver;
  std::uint64_t next = 0;  // the scan that is expected
  std::uint64_t told = 0;
  std::vector<std::uint64_t> missing;  // scans before it that did not come
  std::vector<cWindow> windows;
};
