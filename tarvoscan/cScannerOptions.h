#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tarvoscan/cHealth.h"
#include "tarvoscan/cLineEvent.h"

namespace tarvo {

/// What a scanner is to do. A plain value. What no sensor can do (a cluster of 100) is reported by
/// the scanner as `eProblem::RANGE_IMPOSSIBLE`.
struct cScannerOptions {
  cScannerOptions() = default;
  /// The sensor on `path`, with all else as it comes.
  cScannerOptions(const char* path) : device(path) {}  // NOLINT(google-explicit-constructor)
  /// The same.
  cScannerOptions(const std::string& path) : device(path) {}  // NOLINT(google-explicit-constructor)

  std::string device;  ///< path of the tty
  /// The serial number that the sensor must have; "": any. With another sensor the scanner waits,
  /// and its health names whom it found.
  std::string serial;
  /// More paths to look at for that serial number, after `device`. No other port is ever opened.
  std::vector<std::string> otherDevices;

  int lineSpeed =
      0;  ///< bits per second at which to look; 0: the speeds at which sensors are shipped
  /// Bits per second to raise the line to once the sensor is found ("SS"; SCIP 1.x: "S"); 0: as
  /// found.
  int raisedSpeed = 0;

  std::optional<int> firstStep;      ///< default: the sensor's
  std::optional<int> lastStep;       ///< default: the sensor's
  std::optional<double> firstAngle;  ///< radians, instead of `firstStep`: the nearest step within
  std::optional<double> lastAngle;   ///< radians, instead of `lastStep`
  int cluster = 1;                   ///< steps that make one point, 1 to 99
  int skippedTurns = 0;              ///< turns left out between two scans, 0 to 9
  /// Longest distance that matters, millimetres; up to 4095 a scan needs a third fewer bytes
  /// ("MS"). Default: the sensor's.
  std::optional<int> maxDistance;

  std::vector<int>
      farCodes;  ///< distances below the sensor's shortest that mean "nothing in range": +Inf
  std::vector<int> nearCodes;  ///< and those that mean "too near": -Inf

  bool comesBack = true;  ///< look for a lost sensor until stopped; false: stop when it is lost

  /// Called with the new health at each change of state or problem, in the reading thread. It must
  /// return soon, and may call what `cScanner` allows there. What it throws is dropped.
  std::function<void(const cHealth&)> onHealth;

  tLineTap onLine;  ///< called with what passes over the line, where there is one
};

}  // namespace tarvo
