#pragma once

#include <stdexcept>
#include <string>

#include "tools/printMessage.h"

namespace tool {

/// The program's exit statuses: part of its contract, scripts depend on them.
enum class eExit {
  SUCCESS = 0,        ///< all done, or the end of a run without a count
  BAD_INPUT = 1,      ///< an option's value, a file or the device is at fault
  USAGE = 2,          ///< the command line cannot be understood
  NO_SENSOR = 3,      ///< nothing answers on the device
  SCANS_STOPPED = 4,  ///< scans stopped arriving
};

/// Ends the command: `what()` is the sentence for the user (what was tried, what happened,
/// what to do), `status` what the process exits with.
class cFailure : public std::runtime_error {
 public:
  cFailure(eExit exitStatus, const std::string& message)
      : std::runtime_error(message), status(exitStatus) {}

  /// Prints it for the user, once however often it is called: early where cleaning up takes long.
  void report() {
    if (!isReported) printMessage(what());
    isReported = true;
  }

  const eExit status;

 private:
  bool isReported = false;
};

/// A failure of the device or the sensor that may end by itself: `--reconnect` waits for that.
class cTransientError : public cFailure {
 public:
  using cFailure::cFailure;
};

}  // namespace tool
