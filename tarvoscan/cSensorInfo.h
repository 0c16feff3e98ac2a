#pragma once

#include <string>

namespace tarvo {

/// What a sensor speaks.
enum class eDialect {
  UNKNOWN,
  SCIP1,          ///< SCIP 1.x alone: it is asked for each scan ("G"), and has no sums
  SCIP2,          ///< SCIP 2.0
  SCIP2_SWITCHED  ///< SCIP 2.0, after the sensor was switched to it from SCIP 1.x ("SCIP2.0")
};

/// "SCIP 2.0", "SCIP 1.x", "SCIP 2.0, switched from SCIP 1.x" or "unknown".
inline const char* toText(eDialect dialect) {
  switch (dialect) {
    case eDialect::SCIP1:
      return "SCIP 1.x";
    case eDialect::SCIP2:
      return "SCIP 2.0";
    case eDialect::SCIP2_SWITCHED:
      return "SCIP 2.0, switched from SCIP 1.x";
    case eDialect::UNKNOWN:
      break;
  }
  return "unknown";
}

/// What is known about a sensor. Texts are the sensor's own and may hold any byte; empty, and
/// numbers 0, where it did not report them. A plain value.
struct cSensorInfo {
  std::string device;                    ///< the path on which it was found
  int lineSpeed = 0;                     ///< bits per second
  eDialect dialect = eDialect::UNKNOWN;  ///< what it speaks

  std::string vendor;    ///< "VV" (SCIP 1.x: "V")
  std::string product;   ///< "VV"
  std::string firmware;  ///< "VV"
  std::string protocol;  ///< "VV"
  std::string serial;    ///< "VV": the serial number
  std::string status;    ///< "II": the state of the sensor in its own words

  int firstStep = 0;       ///< "PP", as are the rest; a SCIP 1.x sensor does not report them: 44
  int lastStep = 0;        ///< SCIP 1.x: 724
  int frontStep = 0;       ///< the step straight ahead; SCIP 1.x: 384
  int stepsPerTurn = 0;    ///< SCIP 1.x: 1024
  int minDistance = 0;     ///< shortest valid distance, millimetres
  int maxDistance = 0;     ///< longest, millimetres
  int turnsPerMinute = 0;  ///< SCIP 1.x: 0
};

}  // namespace tarvo
