#pragma once

#include "tarvolink/driver/iScanList.h"
#include "tarvolink/export.h"

/// The scanning interface, the same on every sensor. Two rules hold on every dialect: a start
/// failed when its result is below 0, and to stop a scan call `stopAll()` and then
/// `abortScan()`. What else the results mean stands with the drivers.
///
/// Steps are the sensor's (`iInfo::getMinSpot` to `getMaxSpot`), `cluster` is the number of
/// steps that make one point (0 to 99), time-outs are milliseconds.
class TARVOLINK_API iSCIP2IF : public iScanList {
 public:
  virtual int startStoringScan() = 0;  ///< lights the laser, so that stored scans are taken
  virtual int stopAll() = 0;           ///< stops measuring
  /// Takes one scan into the list. 0: done (or asked for, see the drivers); -1: not.
  virtual int getStoredScan(int firstStep, int lastStep, int cluster, int maxDistance) = 0;
  virtual int setCommSpeed(int baud) = 0;  ///< asks for another line speed, bits per second
  virtual int resetURG() = 0;              ///< see the drivers
  virtual int fetchVersionStr() = 0;       ///< fills the texts of `iInfo`; 0 or -1
  virtual int fetchParameters() = 0;       ///< fills the numbers of `iInfo`; 0 or -1
  virtual int updateStatus() = 0;          ///< fills the status of `iInfo`; 0 or -1
  /// Starts scanning: `interval` is the number of turns (SCIP 2.0) or tenths of a second
  /// (SCIP 1.x) between scans, `numScans` how many (0: until stopped), `maxDistance` the
  /// longest distance that matters, millimetres. Below 0: refused, or no answer.
  virtual int startScan(int firstStep, int lastStep, int cluster, int interval, int numScans,
                        int maxDistance) = 0;
  virtual int abortScan() = 0;             ///< ends the scan; below 0: none runs, or no answer
  virtual int resumeScan() = 0;            ///< see the drivers
  virtual int scansToGo() = 0;             ///< see the drivers
  virtual bool waitScan(int timeout) = 0;  ///< waits for a scan; true: one came
  virtual int waitScan() = 0;              ///< see the drivers
  virtual bool isScanning() = 0;           ///< whether a scan was started and not ended

 protected:
  ~iSCIP2IF() = default;
};
