#pragma once

#include <mutex>
#include <optional>
#include <string>

#include "tools/cDeviceName.h"
#include "tools/cFailure.h"
#include "tools/cOutput.h"
#include "tools/cReaderWatch.h"
#include "tools/cScanRange.h"
#include "tools/cScanRun.h"
#include "tools/cStatusLine.h"
#include "tools/cTally.h"
#include "tools/iScanFormat.h"

namespace tool {

/// What the user asks `scan` to do.
struct cScanOrder {
  cDeviceWish device;
  int wanted = 1;  ///< scans; 0: until stopped
  cScanWish range;
  eScanFormat format = eScanFormat::TABLE;
  std::string file;             ///< "": standard output
  std::string plot;             ///< "": none
  bool isReconnecting = false;  ///< wait for a device that was lost
};

/// Scans from the first to the last, over as many connections as that takes. Belongs to one
/// thread.
class cScanJob {
 public:
  /// Looks whether the output can be written; throws `cFailure` if not. All must outlive the job.
  cScanJob(const cScanOrder& given, const cDeviceName& device, cStop& ender);

  /// Takes all scans and says how it went. Throws `cFailure` when that cannot be; the output's
  /// older file is as it was then, and scans that were taken stay in one beside it.
  void run();

 private:
  void takeAll();
  void takeFrom(const cSensor& sensor);
  void takeFrom(cScanRun& scans, const iScanFormat& rows);
  void handOut(boost::shared_ptr<cScan> scan, const iScanFormat& rows);
  void waitFor(cPassingFailure& trouble);
  bool isDone();
  void finish();
  void finishSuddenly();
  void sayWhatIsLeft();
  void draw() const;
  std::string getLastWords() const;

  const cScanOrder& order;
  const cDeviceName& name;
  cStop& stop;
  cOutput output;
  const cReaderWatch reader;
  cTally tally;
  cStatusLine progress;
  std::string saidTrouble;
  std::string product;  // of the sensor that the last scan came from
  std::optional<cScanRange> lastRange;
  boost::shared_ptr<cScan> last;  // empty: none yet
  std::mutex finishing;     // guards what the end looks at, since that may come in another thread
  bool isFinished = false;  // under finishing
};

}  // namespace tool
