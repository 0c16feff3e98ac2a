#pragma once

#include "tarvoscan/tarvoscan.h"

namespace tool {

/// With `-v`: prints what passes over a line, a line each, with its time. Empty otherwise, so that
/// nothing is spent on it. It may be called in any thread.
tarvo::tLineTap lineLog();

}  // namespace tool
