#pragma once

#include <chrono>
#include <random>

#include "tests/soak/cScanJudge.h"
#include "tests/support/driving.h"

/// One sensor and its driver, from opening to the end, with faults that come and go. One thread.
class cDriverSession {
 public:
  using cClock = std::chrono::steady_clock;

  /// Throws std::runtime_error if the sensor, which has no fault yet, does not scan.
  cDriverSession(std::mt19937& rng, cTally& tally);
  ~cDriverSession();
  cDriverSession(const cDriverSession&) = delete;
  cDriverSession& operator=(const cDriverSession&) = delete;

  /// Some faults one after the other, until `end` at the latest, and then a pulled cable or a stop.
  void run(cClock::time_point end);

 private:
  void endure(eSimFault fault);
  void finish();
  void take(int milliseconds);
  void judge(const std::vector<int>& distances);

  std::mt19937& rng;
  cTally& tally;
  cSimSensor sensor;
  tDriver2 driver;
  cScanJudge scans;
  std::uint64_t flagged = 0;  // scans with another number of points
};
