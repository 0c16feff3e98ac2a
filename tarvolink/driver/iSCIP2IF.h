#pragma once

#include "tarvolink/driver/iScanList.h"
#include "tarvolink/export.h"

/// The scanning interface, the same for every sensor. Two rules hold for both dialects: a start
/// has failed if its result is below 0 (SCIP 1.x: 0 means that a scan already runs and goes on),
/// and to stop a scan, call `stopAll()` and then `abortScan()`.
///
/// Steps are the sensor's (`iInfo::getMinSpot` to `iInfo::getMaxSpot`). `cluster` is the number of
/// steps that make one point, 1 to 99 (0 sends single steps too, but gives all of them the first
/// one's angle). Distances are millimetres, time-outs milliseconds.
///
/// A result of -1 means a refusal by the sensor, or no answer within 2 s after the command was
/// written (it waits for the record under way: minutes on a line that never falls silent). The
/// cause is `getErr()` or, with SCIP 2.0, what `cSensorDriverSCIP2::doRaw2` returns for the same
/// command. With SCIP 1.x most operations only post a request to the adapter's thread: 0 does not
/// mean that the sensor has accepted it.
///
/// The fetches, `getStoredScan`, `abortScan` and `waitScan(int)` throw std::out_of_range as in
/// `iScanList`. The driver goes on afterwards: a fetch keeps the values before the fault, and
/// `abortScan` has ended the scan and kept its other records.
class TARVOLINK_API iSCIP2IF : public iScanList {
 public:
  /// Switches the laser on ("BM"; SCIP 1.x: "L0"), which `getStoredScan` needs. 0 or -1, which may
  /// mean that it was already on. Any thread.
  virtual int startStoringScan() = 0;
  /// Stops measuring ("QT", laser off; SCIP 1.x: no more "G"). 0 or -1. Any thread.
  virtual int stopAll() = 0;
  /// Takes one scan into the list ("GD" if `maxDistance` is above 4095, otherwise "GS"); the laser
  /// must be on. 0: it is there, unless the answer had no data. -1: failed. SCIP 1.x ("G", twice;
  /// `maxDistance` is not used): 0: requested, see `waitScan`; -1: a scan runs. Any thread.
  virtual int getStoredScan(int firstStep, int lastStep, int cluster, int maxDistance) = 0;
  /// Requests another line speed, in bits per second as in `iSCIP1IF::doSpeed`. SCIP 2.0: -1,
  /// nothing is sent. SCIP 1.x ("S"): 1, or 0 while a scan runs. Any thread.
  virtual int setCommSpeed(int baud) = 0;
  /// Sends "SS" without a speed, which sensors refuse: 0 or -1. SCIP 1.x: 0, nothing. Any thread.
  virtual int resetURG() = 0;
  virtual int fetchVersionStr() = 0;  ///< fills the texts ("VV"; SCIP 1.x: "V"). Any thread.
  virtual int fetchParameters() = 0;  ///< fills the numbers ("PP"; SCIP 1.x: none). Any thread.
  virtual int updateStatus() = 0;     ///< fills the status ("II"; SCIP 1.x: none). Any thread.
  /// Starts scanning ("MD" if `maxDistance` is above 4095, otherwise "MS"; SCIP 1.x: repeated "G").
  /// `interval` is the number of turns skipped between two scans (0 to 9; SCIP 1.x: tenths of a
  /// second from scan to scan), `numScans` their number (1 to 99, SCIP 1.x takes one more; 0: until
  /// stopped), `maxDistance` the longest distance needed (SCIP 1.x: not used). Below 0: refused, or
  /// no answer within 200 ms, with a message on standard error. Any thread.
  virtual int startScan(int firstStep, int lastStep, int cluster, int interval, int numScans,
                        int maxDistance) = 0;
  /// Ends the scan ("QT") and keeps the scans that have come in the list. -1: none runs, or no
  /// answer. SCIP 1.x: 0, ends nothing, which is why `stopAll` comes first. Any thread.
  virtual int abortScan() = 0;
  /// SCIP 2.0: -1. SCIP 1.x: continues a counted scan that was stopped; 0, or -1 if there is none.
  /// Any thread.
  virtual int resumeScan() = 0;
  /// SCIP 2.0: -1. SCIP 1.x: the scans still to take, less one; -1 if endless, 0 if none runs. Any
  /// thread.
  virtual int scansToGo() = 0;
  /// Waits up to `timeout` milliseconds for a scan. SCIP 2.0: true if scans wait now; without a
  /// started scan it ends the process (assertion). SCIP 1.x: true if the sensor was asked once
  /// more, even in vain, so look at the list. Any thread.
  virtual bool waitScan(int timeout) = 0;
  /// Prefer `waitScan(int)`. SCIP 2.0: waits up to 10 s for the next scan and discards it; 1: one
  /// came, 0: none; assertion as above. SCIP 1.x: waits, without limit, until the sensor has been
  /// asked; 0. Any thread.
  virtual int waitScan() = 0;
  /// Whether a scan was started and has not ended. SCIP 2.0: `abortScan` ends it. SCIP 1.x: so do
  /// `stopAll`, the last scan of a count, and a failed answer if there is no count. Any thread.
  virtual bool isScanning() = 0;

 protected:
  ~iSCIP2IF() = default;
};
