#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace tool {

/// A process that has a device.
struct cHolder {
  pid_t pid;
  std::string name;  ///< of its program; "" when the system does not tell
  bool hasLock;      ///< on the device
};

/// The other processes that have the tty at `path` open, or hold a lock on it (flock(2)), by
/// process id. From /proc: only root sees what other users' processes have open, while locks are
/// seen by all. The owner of a pseudo-terminal's master, which plays the device, is not counted.
std::vector<cHolder> holdersOf(const std::string& path);

/// Those of `holders` that this process has to wait for or to report. One that runs this very
/// program, without the lock, has started at the same moment: it finds the lock and leaves.
std::vector<cHolder> withoutLosers(std::vector<cHolder> holders);

/// "minicom (process 123), cat (process 124)".
std::string toText(const std::vector<cHolder>& holders);

}  // namespace tool
