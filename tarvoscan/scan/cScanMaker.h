#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "tarvoscan/cLaserScan.h"
#include "tarvoscan/cScannerOptions.h"
#include "tarvoscan/scan/cScanRange.h"
#include "tarvoscan/scan/cSensorClock.h"

namespace tarvo {

/// Turns the distances of one connection into scans: numbers, stamps, angles, metres. Knows no
/// port. One thread.
class cScanMaker {
 public:
  /// For scans of `range` by `sensor`. Numbers go on from `firstNumber`.
  cScanMaker(const cScannerOptions& options, const cScanRange& range,
             std::shared_ptr<const cSensorInfo> sensor, std::uint64_t firstNumber);

  /// The scan of these distances, whose record's first byte arrived at `arrival` (CLOCK_MONOTONIC,
  /// nanoseconds).
  std::shared_ptr<cLaserScan> make(std::vector<int> distances, std::optional<std::uint32_t> clock,
                                   std::int64_t arrival);

  /// What is known about the sensor has changed; its parameters have not.
  void setSensor(std::shared_ptr<const cSensorInfo> news) { sensor = std::move(news); }

  /// A scan that was asked for did not come, or not whole. SCIP 1.x alone: a stream's clock shows
  /// it.
  void skip();

  /// Scans that are missing between the latest two, as far as the sensor's clock shows it.
  std::uint64_t getMissing() const { return missing; }

  std::uint64_t getNextNumber() const { return number; }
  const cSensorClock& getClock() const { return clock; }

  /// Turns per second; 0: not known.
  double getTurnRate() const { return turn > 0 ? 1 / turn : 0; }

  /// Scans per second that the sensor makes; 0: not known.
  double getExpectedRate() const { return getTurnRate() / (range.skippedTurns + 1); }

 private:
  void followTurns(std::int64_t passedMilliseconds);
  void stamp(cLaserScan& scan, std::int64_t arrival) const;
  float toRange(int distance) const;
  float toRangeOfCode(int code) const;

  const cScannerOptions& options;
  const cScanRange range;
  std::shared_ptr<const cSensorInfo> sensor;
  const int nearest;   // millimetres
  const int farthest;  // millimetres
  const double angleIncrement;
  double turn;  // seconds; 0: not known
  std::uint64_t number;
  std::uint64_t missing = 0;
  cSensorClock clock;
};

/// The host's UTC less its monotonic clock, nanoseconds.
std::int64_t getUtcOffset();

}  // namespace tarvo
