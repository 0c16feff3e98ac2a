#pragma once

#include <string>

#include "tarvoscan/cProblem.h"
#include "tarvoscan/port/cDescriptor.h"

namespace tarvo {

/// Opens the tty at `path` for this process alone: without waiting for a carrier and without making
/// it the controlling terminal (open(2), O_NONBLOCK, O_NOCTTY), locked (flock(2)), and its line as
/// the driver library expects it: receiver on, no modem lines, no parity, no software flow control.
/// Empty, with `problem`, where it is missing, forbidden, no terminal, or another process has it;
/// nothing was sent or set then.
cDescriptor openPort(const std::string& path, cProblem& problem);

/// The problem of a device at `path` that cannot be used, by an error as errno has it.
cProblem describeError(const std::string& path, int error);

/// Whether the device behind an open descriptor is gone: unplugged, its driver removed.
bool isDisconnected(int terminal);

/// Whether `path` now leads to another device than the open descriptor, or to none.
bool isElsewhere(const std::string& path, int terminal);

}  // namespace tarvo
