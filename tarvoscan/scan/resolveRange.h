#pragma once

#include "tarvoscan/cProblem.h"
#include "tarvoscan/cScannerOptions.h"
#include "tarvoscan/cSensorInfo.h"
#include "tarvoscan/scan/cScanRange.h"

namespace tarvo {

/// Completes what `options` ask for by what `sensor` has. False, with `problem`: it cannot do that.
bool resolveRange(const cScannerOptions& options, const cSensorInfo& sensor, cScanRange& range,
                  cProblem& problem);

}  // namespace tarvo
