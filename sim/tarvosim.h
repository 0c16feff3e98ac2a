/// The simulated sensor's one header for its users: include this, link `tarvosim`.
///
///     cSimSetting setting;
///     setting.model = eSimModel::LONG_RANGE;
///     cSimSensor sensor(setting);
///     open(sensor.getPath().c_str(), O_RDWR | O_NOCTTY);   // and talk SCIP to it
#pragma once

#include "sim/cSimSensor.h"
#include "sim/cSimSetting.h"
#include "sim/eSimFault.h"
