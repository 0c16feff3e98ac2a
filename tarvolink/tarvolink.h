#pragma once

/// @file
/// The one header that a host program includes. Start at `cSensorDriverManager::create`.

#include "tarvolink/base/cBSync.h"
#include "tarvolink/base/cMessQueue.h"
#include "tarvolink/base/cSingleton.h"
#include "tarvolink/base/cThread.h"
#include "tarvolink/base/cTime.h"
#include "tarvolink/base/cTimezoneInfo.h"
#include "tarvolink/driver/cInfo.h"
#include "tarvolink/driver/cSensorDriver.h"
#include "tarvolink/driver/cSensorDriverManager.h"
#include "tarvolink/driver/iInfo.h"
#include "tarvolink/driver/iSCIP1IF.h"
#include "tarvolink/driver/iSCIP2IF.h"
#include "tarvolink/driver/iScanList.h"
#include "tarvolink/port/basic_portbuf.h"
#include "tarvolink/port/basic_portstream.h"
#include "tarvolink/port/cPortSetting.h"
#include "tarvolink/scan/cScan.h"
#include "tarvolink/scan/cScanFactory.h"
#include "tarvolink/scan/tLockableList.h"
#include "tarvolink/scip/cSCIPError.h"
#include "tarvolink/scip/cSCIPRecord.h"
#include "tarvolink/scip/cTarvoLink.h"
#include "tarvolink/scip1/cSCIP12Adapter.h"
#include "tarvolink/scip1/cSensorDriverSCIP1.h"
#include "tarvolink/scip1/cSensorDriverSCIP1z.h"
#include "tarvolink/scip2/cSCIP2Comm.h"
#include "tarvolink/scip2/cSCIP2RecordListener.h"
#include "tarvolink/scip2/cSensorDriverSCIP2.h"

/// What the sensor drivers are built of: threads, signals, time stamps, the serial port.
namespace kavTBX {}
