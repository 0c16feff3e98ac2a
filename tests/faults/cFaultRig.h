#pragma once

#include "tests/faults/cFaultOracle.h"

/// A sensor of that dialect that measures so often a second; as fast as it is read if 0.
cSimSetting paced(eSimDialect dialect = eSimDialect::SCIP2, double rate = 50);

/// FIRST to LAST, without end if `count` is 0.
int startScan(iSCIP2IF& driver, int count = 0, int most = FAR, int interval = 0);

/// A running driver for it without a detection.
tDriver openAny(const cSimSensor& sensor);

/// A sensor that is watched, and a driver for it.
struct cFaultRig {
  explicit cFaultRig(const cSimSetting& setting);
  /// Starts a scan and waits for the first of it.
  void scan(int count = 0);

  cSimSensor sensor;
  cFaultOracle oracle{sensor};
  tDriver driver;  // goes first
  iSCIP2IF& face;
};

/// Names a case by its row and the dialect.
struct cRowName {
  template <class tRow>
  std::string operator()(const testing::TestParamInfo<std::tuple<tRow, eSimDialect>>& info) const {
    const auto& [row, dialect] = info.param;
    return row.name + std::string(dialect == eSimDialect::SCIP2 ? "" : "Scip1");
  }
};
