#pragma once

#include <string>

#include "tarvoscan/tarvoscan.h"
#include "tools/base/cFailure.h"

namespace tool {

/// What the user is told of a problem: what happened, and what to do with this program.
std::string toMessage(const tarvo::cProblem& problem);

/// The end of a command by it; `wasScanning`: after its first scan had been asked for.
cFailure toFailure(const tarvo::cProblem& problem, bool wasScanning);

}  // namespace tool
