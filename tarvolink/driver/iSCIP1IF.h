#pragma once

#include <string>

#include "tarvolink/export.h"

/// The SCIP 1.x command set, available on every sensor. An operation blocks for one exchange. SCIP
/// 1.x: each read takes up to the port's read time-out (300 ms after a search), after waiting for
/// its turn while an adapter scans. SCIP 2.0: up to 2 s after the record under way. Either can take
/// minutes on a line that never falls silent.
///
/// Results: 0 for success, -1 for a failed exchange, 1 to 9 for a refusal with that status digit
/// (SCIP 1.x only). `getErr()` holds the cause of -1, see there.
class TARVOLINK_API iSCIP1IF {
 public:
  /// Asks for the version ("V"; SCIP 2.0: "VV") and fills the texts of `iInfo`. Any thread.
  virtual int doVersion() = 0;
  /// Takes one scan from step `start` to step `end` ("G"; SCIP 2.0: "GS") into the list of scans.
  /// Steps are `iInfo::getMinSpot` to `iInfo::getMaxSpot`, `cluster` of them (0 to 99) make one
  /// point, and distances are 4095 mm at most. Any thread.
  virtual int doScan(int start, int end, int cluster) = 0;
  /// Switches the laser ("L0" on, "L1" off; SCIP 2.0: "BM", always on). Any thread.
  virtual int doLaser(bool on) = 0;
  /// Changes the line speed ("S") to `baud` bits per second: one of
  /// `kavTBX::cPortSetting::baudRate` that the sensor supports; it is not checked here. SCIP 2.0:
  /// -1, nothing is sent. Any thread.
  virtual int doSpeed(int baud) = 0;
  virtual const int& getErr() const = 0;              ///< as `iInfo::getErr`
  virtual std::string getLastRawCommand() const = 0;  ///< as `iInfo::getLastRawCommand`
  virtual std::string getResponseBody() const = 0;    ///< as `iInfo::getResponseBody`
  /// Sends `command` (without a line end) and receives its record, see `getResponseBody`. SCIP 2.0:
  /// -1, nothing is sent. Any thread.
  virtual int doRaw(std::string command) = 0;

 protected:
  ~iSCIP1IF() = default;
};
