#ifndef TARVOLINK_TOOLS_CSUMMARY_H
#define TARVOLINK_TOOLS_CSUMMARY_H

#include <fmt/format.h>

#include "tools/cRateMeter.h"
#include "tools/cScanRun.h"
#include "tools/notice.h"

namespace tool {

/// Says at its end how a run went, also when that end is an error.
class cSummary {
 public:
  cSummary(const cRateMeter& rates, const cScanRun& run) : meter(rates), scans(run) {}
  cSummary(const cSummary&) = delete;
  cSummary& operator=(const cSummary&) = delete;
  ~cSummary() {
    notice(fmt::format("{} scans, {:.2f} a second, {} dropped", meter.getTotal(),
                       meter.getMeanRate(), scans.getDropped()));
  }

 private:
  const cRateMeter& meter;
  const cScanRun& scans;
};

}  // namespace tool

#endif
