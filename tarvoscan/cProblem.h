#pragma once

#include <string>

#include "tarvoscan/export.h"

namespace tarvo {

/// What is wrong, for a program to decide by. The texts of a `cProblem` are for people.
enum class eProblem {
  NONE,
  DEVICE_MISSING,    ///< there is nothing at the path
  DEVICE_FORBIDDEN,  ///< this user may not open it
  DEVICE_IN_USE,     ///< another process has it open or locked
  DEVICE_UNUSABLE,   ///< it is no serial device, or the system refuses to set it up
  DEVICE_GONE,       ///< it was unplugged, or its power went
  NO_SENSOR,         ///< nothing on the line answers as a sensor does
  WRONG_SENSOR,      ///< a sensor answers, and its serial number is not the one asked for
  RANGE_IMPOSSIBLE,  ///< the sensor cannot scan what was asked for
  SENSOR_REFUSES,    ///< it answers, and does not scan: its status says why
  SENSOR_SILENT,     ///< it scanned, and says nothing any more
  SCANS_DAMAGED,     ///< something arrives, and no scan of it is good
  OTHER_SENSOR,      ///< it scans, and is another sensor than before
  SPEED_NOT_RAISED,  ///< the sensor did not take the line speed that was asked for: it scans at the
                     ///< old one
  LINE_TOO_SLOW,     ///< it scans, and its line cannot carry all of it
  NO_THREAD          ///< the system has no thread or descriptor left
};

/// A problem with a sentence that says what was tried and what happened, and one that says what to
/// do. A plain value.
struct cProblem {
  eProblem kind = eProblem::NONE;  ///< for a program
  std::string message;             ///< empty for NONE
  std::string hint;                ///< what to do; may be empty

  /// Whether there is one.
  explicit operator bool() const { return kind != eProblem::NONE; }
};

}  // namespace tarvo
