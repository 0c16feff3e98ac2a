#pragma once

#include <string>
#include <vector>

#include "tarvoscan/tarvoscan.h"
#include "tools/output/cPolarScale.h"
#include "tools/terminal/cPalette.h"
#include "tools/terminal/cTerminalSize.h"

namespace tool {

/// What the status line reports.
struct cViewStatus {
  tarvo::cHealth health;
  double rate = 0;  ///< scans per second; 0: not known yet
  double age = 0;   ///< of the scan in the picture, seconds
};

/// The lines of one picture, as many as `size` has rows: the polar picture of `scan` (null: none
/// came yet), the status (or why no
/// scan comes), and a last line of what the
/// rings mean and, after it, `help`. No line is wider than `size`; a single row is the status.
std::vector<std::string> viewFrame(const cTerminalSize& size, const cPalette& palette,
                                   const cPolarScale& scale, const tarvo::cLaserScan* scan,
                                   const cViewStatus& status, const std::string& help);

}  // namespace tool
