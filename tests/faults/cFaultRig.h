#pragma once

#include "tests/faults/cFaultOracle.h"

/// A sensor of that dialect that measures so often a second; as fast as it is read if 0.
inline cSimSetting paced(eSimDialect dialect = eSimDialect::SCIP2, double rate = 50) {
  cSimSetting setting;
  setting.dialect = dialect;
  setting.rate = rate;
  setting.paced = rate > 0;
  return setting;
}

/// A running driver for a sensor at that path, without a detection.
inline tDriver openAny(eSimDialect dialect, const std::string& path) {
  if (dialect == eSimDialect::SCIP2) return openReady(path);
  return tDriver(new cSensorDriverSCIP1(openLink(path)));
}

/// FIRST to LAST, without end if `count` is 0.
inline int startScan(iSCIP2IF& driver, int count = 0, int most = FAR, int interval = 0) {
  return surely(driver, [&] { return driver.startScan(FIRST, LAST, 1, interval, count, most); });
}

/// A sensor that is watched, and a driver for it.
struct cFaultRig {
  explicit cFaultRig(const cSimSetting& setting) : sensor(setting) {}

  /// Starts a scan and waits for the first of it.
  void scan(int count = 0, int most = FAR) {
    startScan(face, count, most);
    oracle.expectTrueScan(face);
  }

  cSimSensor sensor;
  cFaultOracle oracle{sensor};
  tDriver driver = openAny(sensor.getSetting().dialect, sensor.getPath());  // goes first
  iSCIP2IF& face = *driver->getSCIP2IF();
};

const auto DIALECTS = testing::Values(eSimDialect::SCIP2, eSimDialect::SCIP1);

/// Names a case by its row and the dialect.
struct cRowName {
  template <class tRow>
  std::string operator()(const testing::TestParamInfo<std::tuple<tRow, eSimDialect>>& info) const {
    const auto& [row, dialect] = info.param;
    return row.name + std::string(dialect == eSimDialect::SCIP2 ? "" : "Scip1");
  }
};
