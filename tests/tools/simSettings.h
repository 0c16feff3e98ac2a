#pragma once

#include "sim/tarvosim.h"

/// As fast as its reader takes the scans, so that a test is short.
inline cSimSetting unpaced(eSimModel model = eSimModel::SHORT_RANGE,
                           eSimDialect dialect = eSimDialect::SCIP2) {
  cSimSetting setting;
  setting.model = model;
  setting.dialect = dialect;
  setting.paced = false;
  return setting;
}

/// 50 scans a second: more are under way, or lost, when something happens to the sensor.
inline cSimSetting fastTurning(const std::string& link = "") {
  cSimSetting setting;
  setting.link = link;
  setting.rate = 50;
  return setting;
}
