#pragma once

#include <stdexcept>
#include <string>

#include "tools/notice.h"

namespace tool {

/// The program's exit statuses: part of its contract, scripts depend on them.
enum class eExit {
  SUCCESS = 0,        ///< all done, or ended by a signal or a reader who had enough
  BAD_INPUT = 1,      ///< an option's value, a file or the device is at fault
  USAGE = 2,          ///< the command line cannot be understood
  NO_SENSOR = 3,      ///< nothing answers on the device
  SCANS_STOPPED = 4,  ///< a running scan dried up
};

/// Ends the command: `what()` is the sentence for the user (what was tried, what happened,
/// what to do), `status` what the process exits with.
class cFailure : public std::runtime_error {
 public:
  cFailure(eExit exitStatus, const std::string& message)
      : std::runtime_error(message), status(exitStatus) {}

  /// Says it to the user, once however often it is called: early where cleaning up takes long.
  void say() {
    if (!isSaid) notice(what());
    isSaid = true;
  }

  const eExit status;

 private:
  bool isSaid = false;
};

/// One of the device's or the sensor's, which may be over by itself later: what `--reconnect`
/// waits out.
class cPassingFailure : public cFailure {
 public:
  using cFailure::cFailure;
};

}  // namespace tool
