#pragma once

#include <CLI/CLI.hpp>

#include "tools/cScanRange.h"

namespace tool {

/// Declares the options that say what a scan covers.
inline void addRangeOptions(CLI::App& command, cScanWish& wish) {
  command.add_option("--first", wish.first, "First step (default: the sensor's)");
  command.add_option("--last", wish.last, "Last step (default: the sensor's)");
  command.add_option("--cluster", wish.cluster, "Steps that make one point (default: 1)");
  command.add_option("--interval", wish.interval,
                     "Turns to skip after each scan, 0 to 9 (default: 0)");
  command.add_option("--max-distance", wish.maxDistance,
                     "Longest distance that matters, mm; up to 4095 needs fewer bytes "
                     "(default: the sensor's)");
}

}  // namespace tool
