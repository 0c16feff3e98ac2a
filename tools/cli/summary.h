#pragma once

#include <string>

#include "tarvoscan/tarvoscan.h"
#include "tools/terminal/cRateMeter.h"

namespace tool {

/// "39.9 of 40.0 scans a second, 2 damaged, 1 lost, clock jitter 0.3 ms".
std::string describeHealth(const tarvo::cHealth& health);

/// "60 scans, 59 damaged, 1 lost, 9.98 a second, 0 dropped, 0 reconnects"; a single scan has no
/// rate.
std::string getSummary(const cRateMeter& meter, const tarvo::cHealth& health);

/// Says how a run went.
void printSummary(const cRateMeter& meter, const tarvo::cHealth& health);

}  // namespace tool
