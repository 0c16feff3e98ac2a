#pragma once

#include "tarvolink/driver/iScanList.h"
#include "tarvolink/export.h"

/// The scanning interface, the same on every sensor. Two rules hold on every dialect: a start
/// failed when its result is below 0 (SCIP 1.x: 0 is a scan that runs already and goes on), and to
/// stop a scan call `stopAll()` and then `abortScan()`.
///
/// Steps are the sensor's (`iInfo::getMinSpot` to `iInfo::getMaxSpot`). `cluster` is the number of
/// steps that make one point, 1 to 99 (0 sends single steps too, but gives all of them the first
/// one's angle). Distances are millimetres, time-outs milliseconds.
///
/// A result of -1 is a refusal by the sensor or no answer within 2 s of the command being written,
/// behind the record under way (minutes on a line that never falls silent); the cause is `getErr()`
/// or, with SCIP 2.0, what `cSensorDriverSCIP2::doRaw2` returns for the same command. With SCIP 1.x
/// most operations only ask the adapter's thread, and 0 tells nothing of the sensor's answer. The
/// fetches, `getStoredScan`, `abortScan` and `waitScan(int)` throw as `iScanList` tells; a fetch
/// that fails keeps what was told before the fault.
class TARVOLINK_API iSCIP2IF : public iScanList {
 public:
  /// Lights the laser ("BM"; SCIP 1.x: "L0"), so that stored scans are taken. 0 or -1, which may
  /// stand for a laser that is on already. Any thread.
  virtual int startStoringScan() = 0;
  /// Stops measuring ("QT", laser off; SCIP 1.x: no more "G"). 0 or -1. Any thread.
  virtual int stopAll() = 0;
  /// Takes one scan into the list ("GD" where `maxDistance` is above 4095, else "GS"), laser on.
  /// 0: it is there, unless the answer held none; -1: not. SCIP 1.x ("G", twice, `maxDistance` not
  /// used): 0: asked for, see `waitScan`; -1: a scan runs. Any thread.
  virtual int getStoredScan(int firstStep, int lastStep, int cluster, int maxDistance) = 0;
  /// Asks for another line speed, bits per second as in `iSCIP1IF::doSpeed`. SCIP 2.0: -1, nothing
  /// is sent. SCIP 1.x ("S"): 1, or 0 while a scan runs. Any thread.
  virtual int setCommSpeed(int baud) = 0;
  /// Sends "SS" without a speed, which sensors refuse: 0 or -1. SCIP 1.x: 0, nothing. Any thread.
  virtual int resetURG() = 0;
  virtual int fetchVersionStr() = 0;  ///< fills the texts ("VV"; SCIP 1.x: "V"). Any thread.
  virtual int fetchParameters() = 0;  ///< fills the numbers ("PP"; SCIP 1.x: none). Any thread.
  virtual int updateStatus() = 0;     ///< fills the status ("II"; SCIP 1.x: none). Any thread.
  /// Starts scanning ("MD" where `maxDistance` is above 4095, else "MS"; SCIP 1.x: "G" again and
  /// again). `interval` is the number of turns left out between two scans (0 to 9; SCIP 1.x:
  /// tenths of a second from scan to scan), `numScans` how many (1 to 99, SCIP 1.x one more; 0:
  /// until stopped), `maxDistance` the longest distance that matters (SCIP 1.x: not used).
  /// Below 0: refused, or no answer within 200 ms; standard error tells which. Any thread.
  virtual int startScan(int firstStep, int lastStep, int cluster, int interval, int numScans,
                        int maxDistance) = 0;
  /// Ends the scan ("QT") and keeps what came of it in the list. -1: none runs, or no answer.
  /// SCIP 1.x: 0, nothing ends, which is why `stopAll` comes first. Any thread.
  virtual int abortScan() = 0;
  /// SCIP 2.0: -1. SCIP 1.x: goes on with a counted scan that was stopped; 0, or -1 if there is
  /// none. Any thread.
  virtual int resumeScan() = 0;
  /// SCIP 2.0: -1. SCIP 1.x: scans still to take, less one; -1 without end, 0 unless scanning. Any
  /// thread.
  virtual int scansToGo() = 0;
  /// Waits up to `timeout` milliseconds for a scan. SCIP 2.0: whether scans wait now; without a
  /// started scan it ends the process (assertion). SCIP 1.x: whether the sensor was asked once
  /// more, be it in vain: look at the list. Any thread.
  virtual bool waitScan(int timeout) = 0;
  /// SCIP 2.0: takes the next scan, waiting up to 10 s, and throws it away; 1: one came, 0: none;
  /// assertion as above. SCIP 1.x: waits for the sensor to be asked, without limit; 0. Use the
  /// other one. Any thread.
  virtual int waitScan() = 0;
  /// Whether a scan was started and not ended. SCIP 2.0: by `abortScan`. SCIP 1.x: also by the
  /// last of a count, and by a failed answer where there is no count. Any thread.
  virtual bool isScanning() = 0;

 protected:
  ~iSCIP2IF() = default;
};
