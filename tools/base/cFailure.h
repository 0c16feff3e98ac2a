#pragma once

#include <stdexcept>
#include <string>

namespace tool {

/// The program's exit statuses: part of its contract, scripts depend on them.
enum class eExit {
  SUCCESS = 0,        ///< all done, or the end of a run without a count
  BAD_INPUT = 1,      ///< an option's value, a file or the device is at fault
  USAGE = 2,          ///< the command line cannot be understood
  NO_SENSOR = 3,      ///< nothing answers on the device
  SCANS_STOPPED = 4,  ///< scans stopped arriving, or some are missing and `--strict` forbids that
};

/// Ends the command: `what()` is the sentence for the user (what was tried, what happened,
/// what to do), `status` what the process exits with.
class cFailure : public std::runtime_error {
 public:
  cFailure(eExit status, const std::string& message)
      : std::runtime_error(message), status(status) {}

  const eExit status;
};

/// Ends the command because a shutdown was requested while it waited. Nothing is said of it.
struct cInterrupted {};

}  // namespace tool
