#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace tool {

/// A process that has a device.
struct cHolder {
  pid_t pid;
  std::string name;  // of its program; "" when the system does not tell
};

/// The other processes that have the tty at `path` open, or hold a lock on it (flock(2)), by
/// process id. From /proc: only root sees what other users' processes have open, while locks are
/// seen by all. Whoever plays the device's part (holds a pseudo-terminal's master) has it not.
std::vector<cHolder> holdersOf(const std::string& path);

/// "minicom (process 123), cat (process 124)".
std::string toText(const std::vector<cHolder>& holders);

}  // namespace tool
