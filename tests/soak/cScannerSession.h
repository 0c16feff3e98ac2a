#pragma once

#include <chrono>
#include <random>

#include "sim/tarvosim.h"
#include "tarvoscan/tarvoscan.h"
#include "tests/soak/cScanJudge.h"

/// One sensor and its scanner, which must come back from every fault that the sensor has. One
/// thread.
class cScannerSession {
 public:
  using cClock = std::chrono::steady_clock;

  cScannerSession(eSimDialect dialect, std::mt19937& rng, cTally& tally);

  /// Some faults one after the other, until `end` at the latest, and then a stop.
  void run(cClock::time_point end);

 private:
  void endure(const cSimFaultInfo& info);
  void take(std::chrono::milliseconds time);
  void recover(const cSimFaultInfo& info, std::uint64_t first);
  std::optional<std::uint64_t> judge(const tarvo::tScanPtr& scan);

  const eSimDialect dialect;
  std::mt19937& rng;
  cTally& tally;
  cSimSensor sensor;
  cScanJudge scans;
  tarvo::cScanner scanner;
  tarvo::cSubscription subscription;
};
