#pragma once

#include <chrono>
#include <random>
#include <vector>

#include "tests/soak/cTally.h"
#include "tests/support/driving.h"

/// One sensor and its driver, from opening to the end, with faults that come and go. One thread.
class cSession {
 public:
  using cClock = std::chrono::steady_clock;

  /// Throws std::runtime_error if the sensor, which has no fault yet, does not scan.
  cSession(std::mt19937& rng, cTally& tally);
  /// Counts the scans that were not delivered, each by its reason.
  ~cSession();
  cSession(const cSession&) = delete;
  cSession& operator=(const cSession&) = delete;

  /// Some faults one after the other, until `end` at the latest, and then a pulled cable or a stop.
  void run(cClock::time_point end);

 private:
  /// The scans that a fault may have affected.
  struct cWindow {
    const char* fault;
    std::uint64_t first, last;
  };

  void endure(eSimFault fault);
  void finish();
  void take(int milliseconds);
  void judge(const std::vector<int>& distances);
  void deliver(std::uint64_t scan);
  const char* findFault(std::uint64_t scan) const;

  std::mt19937& rng;
  cTally& tally;
  cSimSensor sensor;
  tDriver2 driver;
  std::uint64_t next = 0;              // the scan expected next
  std::uint64_t flagged = 0;           // scans with another number of points
  std::vector<std::uint64_t> missing;  // scans before `next` that were not delivered
  std::vector<cWindow> windows;
};
