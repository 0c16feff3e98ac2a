#include "tarvoscan/scan/resolveRange.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "tarvolink/tarvolink.h"
#include "tarvoscan/search/cSensorFinder.h"

namespace tarvo {

namespace {

constexpr double FULL_TURN = 6.283185307179586;  // radians
constexpr int MAX_CLUSTER = 99;                  // a command has two digits for it
constexpr int MAX_SKIPPED_TURNS = 9;             // and one for these
constexpr int MAX_SCIP1_STEP = 999;              // and three for a step in SCIP 1.x

bool isWithin(const char* name, int value, int lowest, int highest, cProblem& problem) {
  if (value >= lowest && value <= highest) return true;
  problem = {eProblem::RANGE_IMPOSSIBLE,
             fmt::format("the sensor cannot scan with {} {}.", name, value),
             fmt::format("Choose from {} to {}.", lowest, highest)};
  return false;
}

/// An angle as a step of the sensor, which may lie outside of what it measures.
int stepAt(double angle, const cSensorInfo& sensor) {
  constexpr double FARTHEST = 100 * FULL_TURN;  // a number that an int can hold is left
  const double turns =
      std::clamp(std::isfinite(angle) ? angle : FARTHEST, -FARTHEST, FARTHEST) / FULL_TURN;
  return sensor.frontStep + static_cast<int>(std::lround(turns * sensor.stepsPerTurn));
}

}  // namespace

bool resolveRange(const cScannerOptions& options, const cSensorInfo& sensor, cScanRange& range,
                  cProblem& problem) {
  const int lowest = sensor.firstStep;
  const int highest = sensor.lastStep;
  range.isScip2 = sensor.dialect != eDialect::SCIP1;
  range.firstStep =
      options.firstStep.value_or(options.firstAngle ? stepAt(*options.firstAngle, sensor) : lowest);
  range.lastStep =
      options.lastStep.value_or(options.lastAngle ? stepAt(*options.lastAngle, sensor) : highest);
  range.cluster = options.cluster;
  range.skippedTurns = options.skippedTurns;
  range.maxDistance = options.maxDistance.value_or(sensor.maxDistance);
  const bool isWide =
      range.isScip2 ? cSensorDriverSCIP2::isWide(range.maxDistance) : isWideScip1(sensor);
  range.width = isWide ? 3 : 2;
  const int last = range.isScip2 ? highest : std::min(highest, MAX_SCIP1_STEP);
  return isWithin("first step", range.firstStep, lowest, last, problem) &&
         isWithin("last step", range.lastStep, range.firstStep, last, problem) &&
         isWithin("cluster", range.cluster, 1, MAX_CLUSTER, problem) &&
         isWithin("skipped turns", range.skippedTurns, 0, MAX_SKIPPED_TURNS, problem) &&
         isWithin("longest distance", range.maxDistance, 1, 0x3FFFF, problem);
}

}  // namespace tarvo
