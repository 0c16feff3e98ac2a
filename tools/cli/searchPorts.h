#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tarvoscan/tarvoscan.h"
#include "tools/base/cShutdown.h"

namespace tool {

/// Looks for sensors on `paths` side by side, at the line speed `speed` (0: the usual ones), and
/// calls `onResult` in this thread with each result when it is known, until that says that it has
/// enough (true). Throws `cInterrupted` when `stop` is requested before.
void searchPorts(const std::vector<std::string>& paths, int speed, const cShutdown& stop,
                 const std::function<bool(const tarvo::cSearchResult&)>& onResult);

}  // namespace tool
