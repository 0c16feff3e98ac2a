#pragma once

#include <CLI/CLI.hpp>
#include <optional>

#include "tarvoscan/tarvoscan.h"

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

  /// Adds what the scan covers.
  void applyTo(tarvo::cScannerOptions& scanner) const;
};

/// Declares the options that say what a scan covers.
void addRangeOptions(CLI::App& command, cScanOptions& options);

}  // namespace tool
