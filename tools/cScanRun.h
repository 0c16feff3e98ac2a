#pragma once

#include <chrono>
#include <string>

#include "tools/cScanRange.h"
#include "tools/cSensor.h"
#include "tools/cShutdown.h"
#include "tools/cTally.h"

namespace tool {

/// An endless scan on a sensor, from its start to its stop. Belongs to one thread.
class cScanRun {
 public:
  /// Starts scanning. Throws `cTransientError` when the sensor refuses. All must outlive the run.
  cScanRun(const cSensor& sensor, const cScanRange& range, const cShutdown& stop, cTally& tally);
  cScanRun(const cScanRun&) = delete;
  cScanRun& operator=(const cScanRun&) = delete;

  /// Stops the sensor ("QT") and waits for its answer, 6 s at most (or three periods and 4 s); not
  /// if it is gone.
  ~cScanRun();

  /// The next good scan, in the order they came, waiting `timeOut` at most; empty when none came
  /// in that time. Throws `cTransientError` with `SCANS_STOPPED` when the device is gone, or none
  /// came for 2 s or three periods.
  boost::shared_ptr<cScan> nextWithin(std::chrono::milliseconds timeOut);

  /// Scans that came and were not handed out: not of the points asked for, or not to be decoded.
  int getDropped() const { return tally.dropped; }

 private:
  using cClock = std::chrono::steady_clock;

  void start();
  boost::shared_ptr<cScan> takeGood();
  boost::shared_ptr<cScan> takeAny();
  void waitABit(std::chrono::milliseconds timeOut);
  void goOn();
  [[noreturn]] void fail() const;
  std::string getTrouble() const;

  const cSensor& sensor;
  iSCIP2IF& scanner;
  const cScanRange& range;
  const cShutdown& stop;
  cTally& tally;
  const std::chrono::duration<double> patience;
  std::chrono::duration<double> silence{0};  // waited since the last good scan
  int droppedBefore = 0;                     // until the last good scan
  std::size_t heardHalfway = 0;              // characters until half the patience was over
};

}  // namespace tool
