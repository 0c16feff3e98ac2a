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
/// Any thread, for every operation not marked otherwise; each blocks until its line is written
/// (behind the record under way, if any) and then for its answer. Results are 0 for success and -1
/// for a refusal or no answer within 2 s, unless told otherwise; which of them, `doRaw2` tells.
/// `iInfo` is for one caller at a time, as ever.
///
/// Records of a running scan wait until the caller asks for scans; they are turned into scans
/// in the caller's thread, by `getScanNum`, `getScanFirst`, `getScanLast`, `waitScan(int)`
/// and `abortScan`. Nothing bounds them: take what you start, or memory grows by the scans
/// that come. A record with a bad sum makes no scan. MD and GD ranges of 43 readings
/// and each 64 more end in a line that no sum check accepts: they give no scan.
///
/// The conversions and the fetches throw std::out_of_range for a line whose sum is right but
/// which is too short to be what it stands for; that record is lost, nothing else.
class TARVOLINK_API cSensorDriverSCIP2 : public cSensorDriver,
                                         public virtual iSCIP2IF,
                                         public virtual iSCIP1IF {
 public:
  /// A driver over `link`. Every operation needs its thread: call `start` first, or they
  /// wait for it.
  explicit cSensorDriverSCIP2(boost::shared_ptr<cTarvoLink> link);

  /// Stops the thread, after the read under way. The sensor goes on with what it does.
  ~cSensorDriverSCIP2() override;

  /// Starts the communication thread and marks the driver as activated. Throws
  /// boost::thread_resource_error when the system has no thread left. One caller at a time.
  void start();

  /// Gives up what is unanswered and puts the thread to sleep, so that the caller may talk
  /// through the link itself; what has arrived is discarded. One caller at a time, with no other
  /// operation beside it.
  void hush();

  /// Lets go of the link for good; after `hush`, with no call but the destructor afterwards. One
  /// caller at a time.
  void releaseLink();

  /// Sends `command` with a tag and takes one record, waiting 2 s. Never empty: its `error`
  /// is 0, `ETIMEOUT_ECHO` for no answer, `EINVALID_STATUS` for a bad status line, or the
  /// sensor's status with its mark. An empty `command` ends the driver's thread, after which
  /// nothing is answered. The second argument is not used.
  boost::shared_ptr<cSCIPRecord> doRaw2(std::string command, int);

  /// The last read's, not a request's: 0 or `ETIMEOUT_ECHO`, `ETIMEOUT_STAT`, `ETIMEOUT_BODY`. See
  /// `doRaw2` for a request's. One caller at a time.
  const int& getErr() const override;
  /// "V" or "SCIP2.0" where detection sent these, else empty: SCIP 2.0 requests do not change it.
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
  /// Takes one scan ("GD" above 4095 mm, else "GS") into the list; the laser must be on.
  /// Changes the angles with which a running scan's records are converted.
  int getStoredScan(int firstStep, int lastStep, int clusterCount, int maxDistance) override;
  int setCommSpeed(int) override;  ///< -1, nothing is sent
  int resetURG() override;         ///< "SS" without a speed, which sensors refuse
  int fetchVersionStr() override;  ///< "VV": vendor, product, firmware, protocol, serial
  int fetchParameters() override;  ///< "PP": distances, steps, speed
  int updateStatus() override;     ///< "II": the status text
  /// Starts scanning ("MD" above 4095 mm, else "MS"), waiting 200 ms for the acknowledgement.
  /// Steps are 0 to 9999, the cluster 0 to 99, turns left out 0 to 9, scans 0 (without end) to 99:
  /// a number with more digits spoils the command, which sensors refuse. Needs the parameters
  /// fetched, for the angles. A scan that already runs is replaced. -1: no acknowledgement
  /// (" startScan:: comm error??" on standard error) or a refusal, with its status there. The
  /// records of a start that failed are not kept.
  int startScan(int firstStep, int lastStep, int clusterCount, int scanInterval, int numScans,
                int maxDistance) override;
  /// Stops ("QT"), converts what had arrived and ends the scan. -1: none runs, or no answer,
  /// and then it is ended here all the same.
  int abortScan() override;
  int resumeScan() override;  ///< -1
  int scansToGo() override;   ///< -1
  /// Takes one record of the running scan, waiting up to 10 s, and discards it; 1: one came.
  /// Needs a running scan (assertion).
  int waitScan() override;
  /// Takes and converts one record of the running scan, waiting up to `timeout` milliseconds;
  /// whether scans wait now. Needs a running scan (assertion).
  bool waitScan(int timeout) override;
  /// Whether a scan was started; stays true after the last one until `abortScan`.
  bool isScanning() override;

  int doVersion() override;  ///< `fetchVersionStr`
  /// `getStoredScan` with a longest distance of 4095 mm.
  int doScan(int start, int end, int cluster) override;
  int doLaser(bool on) override;            ///< "BM", whatever `on` is
  int doSpeed(int baud) override;           ///< -1, with a message on standard error
  int doRaw(std::string command) override;  ///< -1, nothing is sent

  /// Converts all records of the running scan that wait. The last one's result; false, with a
  /// message on standard error, when no scan runs.
  bool tryRecordToScan();
  /// Converts one data record into a scan and appends it to the list. False: a bad sum, no
  /// scan. A record without data makes none either, and is true.
  bool pushScanRecord(boost::shared_ptr<cSCIPRecord> record);

 private:
  struct cField;

  static int toError(const std::string& status);
  static bool hasFailed(const cSCIPRecord& record);
  int readFields(const cSCIPRecord& record, std::initializer_list<cField> fields);
  int doControl(const char* command);
  void setAngles(int firstStep, int lastStep, int clusterCount);
  void logScanParameters();
  bool acceptStart(cSCIPRecord& acknowledgement);
  boost::shared_ptr<cScan> makeScan(std::vector<int> distances);
  boost::shared_ptr<cSCIP2RecordListener> getScanListener();

  cScanFactory scanFactory;  // under scanMutex
  cSCIP2Comm comm;
  boost::shared_ptr<cSCIP2RecordListener> scanListener;      // under scanMutex
  boost::shared_ptr<cSCIP2RecordListener> lastScanListener;  // under scanMutex
  double firstAngle = 0;                                     // radians; under scanMutex
  double lastAngle = 0;
  double angleStep = 0;
  // Guards the fetched values too, which a start uses and another thread may fetch meanwhile.
  // Taken before no other lock, never held while waiting.
  boost::mutex scanMutex;
};
