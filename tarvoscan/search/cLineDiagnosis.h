#pragma once

#include <string>
#include <vector>

#include "tarvoscan/cProblem.h"
#include "tarvoscan/cSensorSearch.h"
#include "tarvoscan/port/cScanPort.h"

namespace tarvo {

/// What was heard at one speed while a sensor was asked. From text to text, no device.
cHeardAtSpeed classify(const cTraffic& traffic);

/// What was heard at each.
std::vector<cHeardAtSpeed> classifyAll(const std::vector<cTraffic>& capture);

/// The problem of a line on which no sensor answered: the likely cause, and its cure.
cProblem describeSilence(const std::string& device, const std::vector<cHeardAtSpeed>& heard);

}  // namespace tarvo
