#pragma once

#include <string>
#include <vector>

#include "tarvoscan/cSerialDevice.h"

namespace tarvo {

/// The other processes that have the tty at `path` open, or hold a lock on it (flock(2)), by
/// process id. From /proc: only root sees what other users' processes have open, while locks are
/// seen by all. The owner of a pseudo-terminal's master is not counted: it is the device.
std::vector<cPortUser> findPortUsers(const std::string& path);

/// Of these the ones that hold a lock on it.
std::vector<cPortUser> findLockOwners(const std::string& path);

}  // namespace tarvo
