#pragma once

#include <cstdint>
#include <memory>

#include "tarvoscan/cProblem.h"
#include "tarvoscan/cSensorInfo.h"

namespace tarvo {

/// What a scanner is doing; see `cScanner` for the way from one to the other.
enum class eState { SEARCHING, SCANNING, PAUSED, WAITING, STOPPED };

/// "searching", "scanning", "paused", "waiting" or "stopped".
inline const char* toText(eState state) {
  switch (state) {
    case eState::SEARCHING:
      return "searching";
    case eState::SCANNING:
      return "scanning";
    case eState::PAUSED:
      return "paused";
    case eState::WAITING:
      return "waiting";
    case eState::STOPPED:
      break;
  }
  return "stopped";
}

/// How a scanner is. A plain value.
struct cHealth {
  eState state = eState::STOPPED;  ///< what it is doing
  cProblem problem;  ///< why it waits or has stopped, or what is not as it should be while it scans
  /// The sensor, or the last one; empty before the first was found.
  std::shared_ptr<const cSensorInfo> sensor;

  // Counted from the scanner's making.
  std::uint64_t delivered = 0;  ///< good scans
  std::uint64_t damaged = 0;    ///< scans that arrived and failed a test
  std::uint64_t lost =
      0;  ///< turns of which nothing arrived, as far as the sensor's clock shows it
  std::uint64_t dropped = 0;     ///< scans that subscriptions had no room for
  std::uint64_t reconnects = 0;  ///< times that the sensor was found again
  std::uint64_t failedCommands =
      0;                         ///< commands of the host that the sensor refused or did not answer
  std::uint64_t clockSteps = 0;  ///< times that the host's wall clock was set, by 10 ms or more

  double rate = 0;          ///< scans per second over the last two seconds; 0: none
  double expectedRate = 0;  ///< as the sensor turns; 0: not known
  double lineRate =
      0;  ///< scans per second that the line's speed can carry; a USB sensor's line is faster
  double scanAge = -1;  ///< seconds since the latest scan arrived; below 0: none yet
  double clockOffset =
      0;  ///< seconds from the sensor's clock to the host's monotonic one; SCIP 1.x: 0
  double clockJitter = 0;  ///< seconds between the least and the most delay of the last ten seconds
};

}  // namespace tarvo
