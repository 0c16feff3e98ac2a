#pragma once

#include <cstddef>
#include <optional>

#include "tarvolink/tarvolink.h"
#include "tools/cSensor.h"

namespace tool {

/// What the user asks a scan to cover, and for how long; empty: the sensor's own limit.
struct cScanOptions {
  std::optional<int> first;
  std::optional<int> last;
  int cluster = 1;
  int interval = 0;
  std::optional<int> maxDistance;
  std::optional<double> seconds;  ///< how long to scan; empty: no limit

  /// Throws `cFailure` for what no sensor could do: no command carries it.
  void check() const;
};

/// What a scan covers on one sensor: steps, cluster and interval as the scan command has them,
/// distances in millimetres.
class cScanRange {
 public:
  /// Completes `options` from `sensor`'s parameters. Throws `cFailure` when the sensor has not told
  /// them, the range lies outside of them, or its answer could not be read.
  cScanRange(const cScanOptions& options, const cSensor& sensor);

  /// The number of points that a scan has; a partial last cluster counts as one.
  std::size_t getPoints() const;

  /// Starts an endless scan; the library's result.
  int start(iSCIP2IF& scanner) const;

  /// True for a reading that is a distance within the range, no error value of the sensor's.
  bool isValid(double distance) const;

  /// `scan` with only the points that are valid.
  cScan readingsOf(const cScan& scan) const;

  /// Seconds between two scans, as the sensor turns or is asked; 0 when it does not tell.
  double getPeriod() const;

 private:
  void checkSteps(const cSensorDriver& sensor) const;
  void checkForm(const cSensor& sensor) const;
  void checkLastLine() const;
  int getTenths() const;

  const bool isOld;
  const int first;
  const int last;
  const int cluster;
  const int interval;
  const int minDistance;
  const int maxDistance;
  const int turnsPerMinute;
};

}  // namespace tool
