#pragma once

#include <string>
#include <vector>

#include "tools/cPalette.h"
#include "tools/cPolarScale.h"
#include "tools/cTerminalSize.h"

namespace tool {

/// What the status line tells.
struct cViewStatus {
  std::string sensor;  ///< printable
  std::string dialect;
  int lineSpeed = 0;  ///< bits per second
  double rate = 0;    ///< scans per second; 0: not known yet
  int dropped = 0;
  double age = 0;  ///< of the scan in the picture, seconds
};

/// The lines of one picture, as many as `size` has rows: the polar picture of `readings` (a scan
/// of which only distances are left; null: none came yet), the status, and a last line of what the
/// rings mean and, after it, `help`. No line is wider than `size`; a single row is the status.
std::vector<std::string> viewFrame(const cTerminalSize& size, const cPalette& palette,
                                   const cPolarScale& scale, const cScan* readings,
                                   const cViewStatus& status, const std::string& help);

}  // namespace tool
