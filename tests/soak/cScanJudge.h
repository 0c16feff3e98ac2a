#pragma once

#include <climits>
#include <cstdint>
#include <optional>
#include <vector>

#include "sim/tarvosim.h"
#include "tests/soak/cTally.h"

/// Holds the scans that a host got against those that a simulated sensor sent, and counts them. One
/// thread.
class cScanJudge {
 public:
  /// The sensor must outlive it.
  cScanJudge(const cSimSensor& sensor, cTally& tally) : sensor(sensor), tally(tally) {}
  /// Counts the scans that were not delivered, each by its reason.
  ~cScanJudge();
  cScanJudge(const cScanJudge&) = delete;
  cScanJudge& operator=(const cScanJudge&) = delete;

  /// Which of the sensor's scans this one is, counted from 0; empty if it measured nothing like it.
  /// Each is delivered once and in order.
  /// @param maxReading  larger readings are reported as this
  std::optional<std::uint64_t> judge(const std::vector<int>& distances, int first, int last,
                                     int maxReading = INT_MAX);

  /// The fault may have cost the sensor's scans from `first` to `last`.
  void addWindow(eSimFault fault, std::uint64_t first, std::uint64_t last);

  /// What the sensor sent until now and was not delivered is missing.
  void finish();

 private:
  struct cWindow {
    eSimFault fault;
    std::uint64_t first, last;
  };

  const char* findFault(std::uint64_t scan) const;

  const cSimSensor& sensor;
  cTally& tally;
  std::uint64_t next = 0;              // the scan expected next
  std::vector<std::uint64_t> missing;  // scans before `next` that were not delivered
  std::vector<cWindow> windows;
};
