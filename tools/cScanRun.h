#ifndef TARVOLINK_TOOLS_CSCANRUN_H
#define TARVOLINK_TOOLS_CSCANRUN_H

#include <chrono>

#include "tools/cScanRange.h"
#include "tools/cSensor.h"
#include "tools/cStop.h"

namespace tool {

/// An endless scan on a sensor, from its start to its stop. Belongs to one thread.
class cScanRun {
 public:
  /// Starts scanning. Throws `cFailure` when the sensor refuses. All must outlive the run.
  cScanRun(const cSensor& sensor, const cScanRange& wanted, const cStop& ender);
  cScanRun(const cScanRun&) = delete;
  cScanRun& operator=(const cScanRun&) = delete;

  /// Stops the sensor ("QT") and waits for its answer, 4 s at most.
  ~cScanRun();

  /// Waits for the next good scan, in the order they came. Empty: a stop was requested. Throws
  /// `cFailure` with `SCANS_STOPPED` when none comes for 2 s or three periods.
  boost::shared_ptr<cScan> next();

  /// The same, but waits `timeOut` at most; empty also when none came in that time.
  boost::shared_ptr<cScan> nextWithin(std::chrono::milliseconds timeOut);

  /// Scans that came and were not handed out: not of the points asked for, or not to be decoded.
  int getDropped() const { return dropped; }

 private:
  using cClock = std::chrono::steady_clock;

  void start();
  boost::shared_ptr<cScan> takeGood();
  boost::shared_ptr<cScan> takeAny();
  void waitABit(std::chrono::milliseconds timeOut);
  [[noreturn]] void fail() const;

  iSCIP2IF& scanner;
  const cScanRange& range;
  const cStop& stop;
  const std::chrono::duration<double> patience;
  std::chrono::duration<double> silence{0};  // waited since the last good scan
  int dropped = 0;
};

}  // namespace tool

#endif
