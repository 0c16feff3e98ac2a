#pragma once

#include <optional>
#include <string>

#include "tools/cli/cScanFeed.h"
#include "tools/output/cOutput.h"
#include "tools/output/iScanFormat.h"
#include "tools/terminal/cRateMeter.h"
#include "tools/terminal/cStatusLine.h"

namespace tool {

/// What the user asks `scan` to do.
struct cScanRunOptions {
  cDeviceOptions device;
  std::optional<int> count;  ///< of scans; 0: until stopped; empty: 1, or 0 with a duration
  cScanOptions range;
  eScanFormat format = eScanFormat::TABLE;
  cCsvColumns columns;
  std::string file;             ///< "": standard output
  std::string plot;             ///< "": none
  bool isPlotShown = false;     ///< the drawing goes to standard output
  bool isReconnecting = false;  ///< wait for a device that was lost
  bool isStrict = false;        ///< fail where a scan is missing
};

/// One run of `scan`, from the search to the summary:
///
///     searching --sensor found--> scanning --count, --duration, Ctrl-C--> done
///         |                          |
///         `--------- failed ---------'
///
/// One thread.
class cScanRun {
 public:
  /// Looks whether the output can be written; throws `cFailure` if not. All must outlive it.
  cScanRun(const cScanRunOptions& options, const cDevice& device, cShutdown& stop);

  /// Takes all scans and says how it went. Throws `cFailure` when that cannot be. After that, and
  /// where `stop` cut it short, the output's older file is as it was, and scans that were taken
  /// stay in one beside it.
  void run();

 private:
  void takeAll(cScanFeed& feed);
  void begin(const cScanFeed& feed);
  void deliver(const cScanFeed& feed, const tarvo::tScanPtr& scan);
  void watchReaders();
  void showProgress();
  void warn();
  void finish(bool isFailed);
  void checkStrictly() const;
  void draw();
  bool hasAll() const;

  const cScanRunOptions& options;
  const std::size_t count;  // 0: until stopped
  const cDevice& device;
  cShutdown& stop;
  const std::unique_ptr<cOutput> plotOutput;  // empty: the drawing is no second stream
  cOutput output;
  std::unique_ptr<iScanFormat> rows;  // once the sensor is known
  cStatusLine progress;
  std::chrono::steady_clock::time_point nextProgress;
  const std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
  cRateMeter meter;
  bool isBegun = false;
  bool hasWarned = false;
  tarvo::cHealth counted;        // of the sensor, so far
  bool isAhead = false;          // scans wait that it counts already
  std::uint64_t lastNumber = 0;  // of the last scan
  tarvo::tScanPtr last;          // empty: none yet
};

}  // namespace tool
