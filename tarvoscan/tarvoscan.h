#pragma once

/// @file
/// The one header that a host of the scanner library includes. Start at `tarvo::cScanner`.

#include "tarvoscan/cHealth.h"
#include "tarvoscan/cLaserScan.h"
#include "tarvoscan/cLineEvent.h"
#include "tarvoscan/cProblem.h"
#include "tarvoscan/cScanner.h"
#include "tarvoscan/cScannerOptions.h"
#include "tarvoscan/cSensorInfo.h"
#include "tarvoscan/cSensorSearch.h"
#include "tarvoscan/cSerialDevice.h"
#include "tarvoscan/cSubscription.h"
#include "tarvoscan/iScanSource.h"

/// Sensors that look after themselves, and what they deliver.
namespace tarvo {

/// The library's version, such as "1.0.0". Lives as long as the library. Any thread.
TARVOSCAN_API const char* getLibraryVersion();

}  // namespace tarvo
