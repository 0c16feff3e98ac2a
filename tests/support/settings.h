#pragma once

#include "sim/tarvosim.h"
#include "tests/support/waiting.h"

/// A sensor that measures so often a second, faster than most real ones, so that a test is short;
/// as fast as it is read if 0. With 50, more scans are under way, or lost, when something happens
/// to it; a sanitizer's host takes 200.
inline cSimSetting turning(double rate = 50, eSimDialect dialect = eSimDialect::SCIP2,
                           eSimModel model = eSimModel::SHORT_RANGE) {
  cSimSetting setting;
  setting.rate = rate;
  setting.paced = rate > 0;
  setting.dialect = dialect;
  setting.model = model;
  return setting;
}

/// Whether it stops scanning: a program that has told it to may be gone before it obeys.
inline bool comesToRest(const cSimSensor& sensor) {
  return eventually([&] { return !sensor.isScanning(); });
}
