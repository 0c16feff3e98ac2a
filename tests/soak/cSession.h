#pragma once

#include <chrono>
#include <random>

#include "tests/soak/cScanJudge.h"

/// One sensor and its host, from opening to the end, with faults that come and go. One thread.
class cSession {
 public:
  using cClock = std::chrono::steady_clock;

  cSession(const cSimSetting& setting, std::mt19937& rng, cTally& tally)
      : rng(rng), tally(tally), sensor(setting), scans(sensor, tally) {}
  virtual ~cSession() = default;

  /// Some faults one after the other, until `end` at the latest, and then the end of the scans.
  void run(cClock::time_point end) {
    take(500);
    const auto& faults = simFaultTable();
    for (int fault = 0; fault < FAULTS_PER_SESSION && cClock::now() < end; ++fault)
      endure(faults[rng() % faults.size()]);
    finish();
    take(0);
  }

 protected:
  /// Begins it; false if the host cannot tell what it damages.
  virtual bool begin(const cSimFaultInfo& info) = 0;
  /// Takes and judges the scans that come meanwhile.
  virtual void take(int milliseconds) = 0;
  /// After a fault: the last scan that it may have cost.
  virtual std::uint64_t recover(const cSimFaultInfo& info) = 0;
  virtual void finish() = 0;

  static std::uint64_t before(std::uint64_t scan, std::uint64_t count) {
    return scan - std::min(scan, count);
  }

  std::mt19937& rng;
  cTally& tally;
  cSimSensor sensor;
  cScanJudge scans;

 private:
  static constexpr int FAULTS_PER_SESSION = 10;  // then a new sensor and host

  void endure(const cSimFaultInfo& info) {
    const std::uint64_t first = sensor.getCounters().scans;
    if (!begin(info)) return;
    take(static_cast<int>(200 + rng() % 1500));
    sensor.clearFault(info.fault);
    scans.addWindow(before(first, 2), recover(info));
    take(static_cast<int>(500 + rng() % 1500));
  }
};
