#pragma once

// The geometry of SCIP 1.x step numbers, which is the same on every such sensor.

constexpr int SCIP1_FRONT_STEP = 384;
constexpr int SCIP1_STEPS_PER_TURN = 1024;
constexpr double SCIP1_DEGREES_PER_STEP = 360.0 * (1.0 / SCIP1_STEPS_PER_TURN);
constexpr double DEGREES_PER_RADIAN = 57.29577951308232;

/// The direction of a step in degrees from the front.
constexpr double toDegrees(int step) {
  return (static_cast<double>(step) - SCIP1_FRONT_STEP) * SCIP1_DEGREES_PER_STEP;
}
