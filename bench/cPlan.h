#pragma once

/// How long to measure. All figures of one run come from the same plan.
struct cPlan {
  int rounds = 9;                ///< library and others in turn, so often; medians of these count
  int pacedScans = 160;          ///< a reader and round, at the sensor's own rate
  double floodSeconds = 1;       ///< a reader and round, as fast as it goes
  int tracedScans = 100;         ///< a reader, under strace
  double idleSeconds = 5;        ///< an idle driver, under strace
  int sensors = 32;              ///< that one process serves, against one of them
  double scalingSeconds = 5;     ///< a round
  int enduringSensors = 25;      ///< of which nothing may be lost
  double endurance = 60;         ///< seconds
  double decodingSeconds = 0.5;  ///< a round

  /// Enough to see that all of it works; the figures are rough.
  static cPlan quick() {
    cPlan plan;
    plan.rounds = 3;
    plan.pacedScans = 45;
    plan.floodSeconds = 0.3;
    plan.tracedScans = 30;
    plan.idleSeconds = 2;
    plan.scalingSeconds = 2;
    plan.endurance = 5;
    plan.decodingSeconds = 0.1;
    return plan;
  }
};
