#pragma once

#include "sim/cSimSetting.h"

/// The figures of a model class.
struct cSimModel {
  const char* name;     ///< what MODL says
  const char* product;  ///< what PROD says
  int first;            ///< AMIN, the first measuring step
  int last;             ///< AMAX, the last one
  int front;            ///< AFRT, the step straight ahead
  int perTurn;          ///< ARES, steps of a whole turn
  int near;             ///< DMIN, mm
  int far;              ///< DMAX, mm
  int rpm;              ///< SCAN, turns a minute
  int errorFirst;       ///< readings from errorFirst to errorLast are error values
  int errorLast;

  static const cSimModel& of(eSimModel model);
  double rate() const { return rpm / 60.0; }
};
