#pragma once

#include <string>
#include <vector>

#include "tarvoscan/tarvoscan.h"

namespace tool {

/// The serial devices to choose from: this machine's, or those that TARVOLINK_DEVICES names. Says
/// which of the latter are none.
std::vector<tarvo::cSerialDevice> serialDevices();

/// The path of the only one, which is used where no DEVICE is given. Throws `cFailure`, with what
/// there is to choose from, where there is none, more than one, or it may not be opened.
std::string defaultDevice();

/// Whether a sensor may be looked for on it: it may be opened, and no other process has it.
bool isFree(const tarvo::cSerialDevice& device);

}  // namespace tool
