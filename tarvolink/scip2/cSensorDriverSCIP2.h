#pragma once

#include <boost/shared_ptr.hpp>
#include <boost/thread/mutex.hpp>
#include <string>

#include "tarvolink/driver/cSensorDriver.h"
#include "tarvolink/export.h"
#include "tarvolink/scan/cScanFactory.h"
#include "tarvolink/scip2/cSCIP2Comm.h"
#include "tarvolink/scip2/cSCIP2RecordListener.h"

/// A sensor that speaks SCIP 2.0.
///
/// Any thread, for every operation not marked otherwise, except those of `iInfo`: one caller at a
/// time. Each blocks until its line is written (after the record under way, if any) and then for
/// its answer. Results are 0 for success and -1 for a refusal or no answer within 2 s, unless
/// stated otherwise; `doRaw2` reports which of the two it was.
///
/// Records of a running scan wait until the caller asks for scans: `getScanNum`, `getScanFirst`,
/// `getScanLast`, `waitScan(int)` and `abortScan` convert them, in the caller's thread. Their
/// number is not limited, so take the scans that you start, or memory grows. A record with a bad
/// checksum makes no scan.
///
/// "MD" and "GD" scans of 43 readings, or 43 plus a multiple of 64, never arrive: their last line
/// holds one character (3 * 43 = 2 * 64 + 1) and its checksum, and a line of 2 characters is
/// refused. Ask for one step more or fewer.
///
/// Conversions and fetches throw std::out_of_range for a record with correct checksums but the
/// wrong shape, such as a line too short to hold a value. Only that record is lost.
class TARVOLINK_API cSensorDriverSCIP2 : public cSensorDriver,
                                         public virtual iSCIP2IF,
                                         public virtual iSCIP1IF {
 public:
  /// A driver over `link`. Every operation needs its thread: those called before `start` wait for
  /// it.
  explicit cSensorDriverSCIP2(boost::shared_ptr<cTarvoLink> link);

  /// Stops the thread, after the read under way. Does not stop the sensor.
  ~cSensorDriverSCIP2() override;

  /// Starts the communication thread and marks the driver as activated. Throws
  /// boost::thread_resource_error when the system has no thread left. One caller at a time.
  void start();

  /// Gives up unanswered requests, puts the thread to sleep and discards what has arrived, so that
  /// the caller may use the link itself until its next call. One caller at a time, and no other
  /// operation during that time.
  void suspend();

  /// Releases the link for good. Call it after `suspend`, and nothing but the destructor
  /// afterwards. One caller at a time.
  void releaseLink();

  /// Sends `command` with a tag and takes one record, waiting up to 2 s. Never empty: its `error`
  /// is 0, `ETIMEOUT_ECHO` for no answer, `EINVALID_STATUS` for a bad status line, or the sensor's
  /// status with its mark. An empty `command` ends the driver's thread, and every later call fails.
  /// The second argument is not used.
  boost::shared_ptr<cSCIPRecord> doRaw2(std::string command, int);

  /// Of the last read, not of a request: 0, `ETIMEOUT_ECHO`, `ETIMEOUT_STAT` or `ETIMEOUT_BODY`.
  /// For a request see `doRaw2`. One caller at a time.
  const int& getErr() const override;
  /// "V" or "SCIP2.0" if detection sent them, otherwise empty: SCIP 2.0 requests do not change it.
  std::string getLastRawCommand() const override;
  std::string getResponseBody() const override;
  iSCIP1IF* getSCIP1IF() override;
  iSCIP2IF* getSCIP2IF() override;

  /// Converts what has arrived; the number of scans waiting.
  int getScanNum() override;
  /// Converts what has arrived; takes the newest scan.
  boost::shared_ptr<cScan> getScanLast() override;
  /// Converts what has arrived; always empty.
  boost::shared_ptr<cScan> getScanLast(int) override;
  /// Converts what has arrived; takes the oldest scan.
  boost::shared_ptr<cScan> getScanFirst() override;
  /// Always empty.
  boost::shared_ptr<cScan> getScanFirst(int) override;
  /// Does nothing.
  void purgeScan() override;

  int startStoringScan() override;  ///< "BM": lights the laser
  int stopAll() override;           ///< "QT": stops measuring, laser off
  /// Takes one scan ("GD" above 4095 mm, otherwise "GS") into the list; the laser must be on.
  /// Changes the angles with which a running scan's records are converted.
  int getStoredScan(int firstStep, int lastStep, int clusterCount, int maxDistance) override;
  int setCommSpeed(int) override;  ///< -1, nothing is sent
  int resetURG() override;         ///< "SS" without a speed, which sensors refuse
  int fetchVersionStr() override;  ///< "VV": vendor, product, firmware, protocol, serial
  int fetchParameters() override;  ///< "PP": distances, steps, speed
  int updateStatus() override;     ///< "II": the status text
  /// Starts scanning ("MD" above 4095 mm, otherwise "MS"), waiting 200 ms for the acknowledgement.
  /// Steps are 0 to 9999, the cluster 0 to 99, skipped turns 0 to 9, scans 0 (without end) to 99:
  /// sensors refuse the command that a number with more digits makes. Needs `fetchParameters`
  /// first, for the angles. Replaces a scan that already runs. -1: no acknowledgement ("
  /// startScan:: comm error??" on standard error) or a refusal, with its status there. The records
  /// of a failed start are not kept.
  int startScan(int firstStep, int lastStep, int clusterCount, int scanInterval, int numScans,
                int maxDistance) override;
  /// Stops ("QT"), ends the scan and converts the records that had arrived. -1: none runs, or no
  /// answer; it then ends the scan on this side all the same. If records throw, the others are
  /// converted first.
  int abortScan() override;
  int resumeScan() override;  ///< -1
  int scansToGo() override;   ///< -1
  /// Takes one record of the running scan, waiting up to 10 s, and discards it; 1: one came, 0:
  /// none. Needs a running scan (assertion).
  int waitScan() override;
  /// Takes and converts one record of the running scan, waiting up to `timeout` milliseconds. True:
  /// scans wait now. Needs a running scan (assertion).
  bool waitScan(int timeout) override;
  /// Whether a scan was started; stays true after the last one until `abortScan`.
  bool isScanning() override;

  /// The command line that `startScan` sends for these arguments, without its tag. Any thread.
  static std::string makeScanCommand(int firstStep, int lastStep, int clusterCount,
                                     int scanInterval, int numScans, int maxDistance);
  /// Whether a scan up to `maxDistance` has three characters a distance ("MD", "GD") and not two.
  /// Any thread.
  static bool isWide(int maxDistance);

  int doVersion() override;  ///< `fetchVersionStr`
  /// `getStoredScan` with a longest distance of 4095 mm.
  int doScan(int start, int end, int cluster) override;
  int doLaser(bool on) override;            ///< "BM", whatever `on` is
  int doSpeed(int baud) override;           ///< -1, with a message on standard error
  int doRaw(std::string command) override;  ///< -1, nothing is sent

  /// Converts the waiting records of the running scan. The last one's result, false if there was
  /// none; false, with a message on standard error, if no scan runs.
  bool tryRecordToScan();
  /// Converts one data record into a scan and appends it to the list. True without a scan for a
  /// record without data; false for a bad checksum.
  bool pushScanRecord(boost::shared_ptr<cSCIPRecord> record);

 private:
  struct cField;

  static bool isLetterStatus(const std::string& status);
  static int toError(const std::string& status);
  static bool hasFailed(const cSCIPRecord& record);
  int readFields(const cSCIPRecord& answer, const char* command,
                 std::initializer_list<cField> fields);
  int doControl(const char* command);
  void setAngles(int firstStep, int lastStep, int clusterCount);
  void logScanParameters();
  bool acceptStart(cSCIPRecord& acknowledgement);
  boost::shared_ptr<cScan> makeScan(std::vector<int> distances);
  boost::shared_ptr<cSCIP2RecordListener> getScanListener();
  void parkListener(const boost::shared_ptr<cSCIP2RecordListener>& aborted);
  void convertAll(cSCIP2RecordListener& aborted);
  bool convertWaiting(cSCIP2RecordListener& listener);

  cScanFactory scanFactory;  // under scanMutex
  cSCIP2Comm comm;
  boost::shared_ptr<cSCIP2RecordListener> scanListener;      // under scanMutex
  boost::shared_ptr<cSCIP2RecordListener> lastScanListener;  // under scanMutex
  double firstAngle = 0;                                     // radians; under scanMutex
  double lastAngle = 0;
  double angleStep = 0;
  // Guards the fetched values too: a start uses them while another thread may fetch them. No other
  // lock is taken under it, and it is never held while waiting.
  boost::mutex scanMutex;
};
