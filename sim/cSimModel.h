#pragma once

#include <string>

#include "sim/cSimSetting.h"

/// The figures of a model class.
struct cSimModel {
  const char* name;     ///< MODL
  const char* product;  ///< PROD
  int first;            ///< AMIN, the first measuring step
  int last;             ///< AMAX, the last measuring step
  int front;            ///< AFRT, the step straight ahead
  int perTurn;          ///< ARES, steps in a whole turn
  int minDistance;      ///< DMIN, mm
  int maxDistance;      ///< DMAX, mm
  int rpm;              ///< SCAN, turns a minute
  int firstError;       ///< readings from firstError to lastError are error values
  int lastError;

  static const cSimModel& of(eSimModel model);
  /// Whether SS and S accept this line speed, on all models.
  static bool acceptsSpeed(int bitsPerSecond);
  /// The serial number, SERI: sensors with different seeds can be told apart.
  static std::string serialNumber(const cSimSetting& setting);
  double rate() const { return rpm / 60.0; }  ///< turns, and so scans, a second
};
