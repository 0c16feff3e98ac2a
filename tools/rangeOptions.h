#pragma once

#include <CLI/CLI.hpp>

#include "tools/cScanRange.h"
#include "tools/number.h"

namespace tool {

/// Declares the options that say what a scan covers.
inline void addRangeOptions(CLI::App& command, cScanOptions& options) {
  const auto add = [&command](const char* name, auto& number, const char* text) {
    requireNumber<int>(command.add_option(name, number, text));
  };
  add("--first", options.first, "First step (default: the sensor's)");
  add("--last", options.last, "Last step (default: the sensor's)");
  add("--cluster", options.cluster, "Steps that make one point (default: 1)");
  add("--interval", options.interval, "Turns to skip after each scan, 0 to 9 (default: 0)");
  add("--max-distance", options.maxDistance,
      "Longest distance that matters, mm; up to 4095 needs fewer bytes (default: the sensor's)");
  requireNumber<double>(
      command
          .add_option("--duration", options.seconds,
                      "End after SECONDS of scanning, such as 2.5 (default: no limit)")
          ->type_name("SECONDS"));
}

}  // namespace tool
