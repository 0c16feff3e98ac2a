#pragma once

#include <fmt/format.h>

#include <string>

#include "tools/cRateMeter.h"
#include "tools/plural.h"

namespace tool {

/// What is counted from a command's first scan to its last, over all sensors that it was connected
/// to meanwhile.
struct cTally {
  cRateMeter meter;
  int dropped = 0;     ///< scans that came and were not handed out
  int reconnects = 0;  ///< times that the sensor was found again
  bool isStarted = false;

  /// "20 scans, 9.98 a second, 0 dropped, 0 reconnects"; a single scan has no rate.
  std::string getText() const {
    const std::size_t scans = meter.getTotal();
    const std::string rate = scans > 1 ? fmt::format("{:.2f} a second, ", meter.getMeanRate()) : "";
    return fmt::format("{}, {}{} dropped, {}", plural(scans, "scan"), rate, dropped,
                       plural(reconnects, "reconnect"));
  }
};

}  // namespace tool
