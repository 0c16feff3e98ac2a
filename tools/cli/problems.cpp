#include "tools/cli/problems.h"

#include "tools/base/printable.h"

namespace tool {

namespace {

using tarvo::eProblem;

/// The program's own words behind the library's.
const char* adviceFor(eProblem kind) {
  switch (kind) {
    case eProblem::DEVICE_MISSING:
      return " 'tarvolink list' shows the serial devices of this machine; 'sim:' is a simulated "
             "sensor.";
    case eProblem::NO_SENSOR:
      return " If you know its line speed, give it (--speed); 'tarvolink list' shows the other "
             "devices.";
    case eProblem::SENSOR_REFUSES:
      return " 'tarvolink info' shows its status.";
    case eProblem::LINE_TOO_SLOW:
      return " (--raise-speed, --cluster, --first, --last, --max-distance)";
    default:
      return "";
  }
}

eExit statusOf(eProblem kind, bool wasScanning) {
  switch (kind) {
    case eProblem::NO_SENSOR:
    case eProblem::WRONG_SENSOR:
      return wasScanning ? eExit::SCANS_STOPPED : eExit::NO_SENSOR;
    case eProblem::SENSOR_SILENT:
    case eProblem::SCANS_DAMAGED:
      return eExit::SCANS_STOPPED;
    default:
      return wasScanning ? eExit::SCANS_STOPPED : eExit::BAD_INPUT;
  }
}

}  // namespace

std::string toMessage(const tarvo::cProblem& problem) {
  const std::string hint = problem.hint.empty() ? "" : " " + problem.hint;
  return oneLine(problem.message + hint) + adviceFor(problem.kind);
}

cFailure toFailure(const tarvo::cProblem& problem, bool wasScanning) {
  return {statusOf(problem.kind, wasScanning), toMessage(problem)};
}

}  // namespace tool
