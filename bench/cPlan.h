#pragma once

/// How long to measure. One plan for all figures of a run.
struct cPlan {
  int rounds = 9;             ///< each measures every reader; the report has the medians
  int pacedScans = 160;       ///< per reader and round, at the sensor's own rate
  double floodSeconds = 1;    ///< per reader and round, as fast as possible
  int tracedScans = 100;      ///< per reader, under strace
  double idleSeconds = 5;     ///< of an idle driver, under strace
  int sensors = 32;           ///< served by one process, compared with one of them
  double scalingSeconds = 5;  ///< per round
  int enduranceSensors = 25;  ///< none of whose scans may be lost
  double enduranceSeconds = 60;
  double decodingSeconds = 0.5;  ///< per round
  int startRounds = 5;           ///< of a scanner's starts and stops

  /// Enough to see that everything works; the figures are rough.
  static cPlan quick() {
    cPlan plan;
    plan.rounds = 3;
    plan.pacedScans = 45;
    plan.floodSeconds = 0.3;
    plan.tracedScans = 30;
    plan.idleSeconds = 2;
    plan.scalingSeconds = 2;
    plan.enduranceSeconds = 5;
    plan.decodingSeconds = 0.1;
    plan.startRounds = 1;
    return plan;
  }
};
