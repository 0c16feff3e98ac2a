#ifndef TARVOLINK_TARVOLINK_H
#define TARVOLINK_TARVOLINK_H

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
#include "tarvolink/scip2/cSCIP2Comm.h"
#include "tarvolink/scip2/cSCIP2RecordListener.h"
#include "tarvolink/scip2/cSensorDriverSCIP2.h"

#endif
