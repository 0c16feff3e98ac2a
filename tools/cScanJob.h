#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "tools/cBrokenPipeWatch.h"
#include "tools/cDeviceName.h"
#include "tools/cFailure.h"
#include "tools/cOutput.h"
#include "tools/cScanRange.h"
#include "tools/cScanRun.h"
#include "tools/cStatusLine.h"
#include "tools/cTally.h"
#include "tools/iScanFormat.h"

namespace tool {

/// What the user asks `scan` to do.
struct cScanJobOptions {
  cDeviceOptions device;
  std::optional<int> count;  ///< of scans; 0: until stopped; empty: 1, or 0 with a duration
  cScanOptions range;
  eScanFormat format = eScanFormat::TABLE;
  cCsvColumns columns;
  std::string file;             ///< "": standard output
  std::string plot;             ///< "": none
  bool isPlotShown = false;     ///< the drawing goes to standard output
  bool isReconnecting = false;  ///< wait for a device that was lost
};

/// Scans from the first to the last, over as many connections as that takes. Belongs to one
/// thread.
class cScanJob {
 public:
  /// Looks whether the output can be written; throws `cFailure` if not. All must outlive the job.
  cScanJob(const cScanJobOptions& options, const cDeviceName& device, cShutdown& stop);

  /// Takes all scans and says how it went. Throws `cFailure` when that cannot be. After that, and
  /// where `stop` cut it short, the output's older file is as it was, and scans that were taken
  /// stay in one beside it.
  void run();

 private:
  void takeAll();
  void takeFrom(const cSensor& sensor);
  void takeFrom(cScanRun& scans, const iScanFormat& rows);
  void deliver(boost::shared_ptr<cScan> scan, const iScanFormat& rows);
  void begin();
  void waitFor(cTransientError& error);
  bool hasAll() const;
  bool isDone();
  void finish(bool isFailed);
  void finishOnExit();
  void draw();
  std::string getLastWords() const;

  const cScanJobOptions& options;
  const std::size_t count;  // 0: until stopped
  const cDeviceName& name;
  cShutdown& stop;
  const std::unique_ptr<cOutput> plotOutput;  // empty: the drawing is no second stream
  cOutput output;
  std::optional<cBrokenPipeWatch> reader;  // until the last scan is written
  std::optional<cBrokenPipeWatch> plotReader;
  cTally tally;
  cStatusLine progress;
  std::string lastReported;
  std::string product;  // of the sensor that the last scan came from
  std::optional<cScanRange> lastRange;
  boost::shared_ptr<cScan> last;  // empty: none yet
  std::mutex finishing;           // guards what `finish` reads; it may run in cShutdown's thread
  bool isFinished = false;        // under finishing
};

}  // namespace tool
