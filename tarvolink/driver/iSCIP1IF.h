#pragma once

#include <string>

#include "tarvolink/export.h"

/// The command set of SCIP 1.x, on every sensor. An operation blocks for one exchange: with SCIP
/// 1.x for the port's read time-out (300 ms after a search) a read, and before that for its turn
/// beside an adapter that scans; with SCIP 2.0 for up to 2 s behind the record under way. A line
/// that never falls silent can make that minutes.
///
/// Results are 0 for success, -1 for a failed exchange, and from a SCIP 1.x sensor its status digit
/// 1 to 9 for a refusal. The cause of -1 is `getErr()`, see there.
class TARVOLINK_API iSCIP1IF {
 public:
  /// Asks for the version ("V"; SCIP 2.0: "VV") and fills the texts of `iInfo`. Any thread.
  virtual int doVersion() = 0;
  /// Takes one scan from step `start` to step `end` (`iInfo::getMinSpot` to `iInfo::getMaxSpot`;
  /// "G", SCIP 2.0: "GS"), `cluster` steps a point (0 to 99), into the list of scans. Distances are
  /// up to 4095 mm. Any thread.
  virtual int doScan(int start, int end, int cluster) = 0;
  /// Switches the laser ("L0" on, "L1" off; SCIP 2.0: "BM", which is on, for both). Any thread.
  virtual int doLaser(bool on) = 0;
  /// Changes the line speed ("S"), bits per second: one of `kavTBX::cPortSetting::baudRate`'s that
  /// the sensor knows; nothing is refused here. SCIP 2.0: -1, nothing is sent. Any thread.
  virtual int doSpeed(int baud) = 0;
  virtual const int& getErr() const = 0;              ///< as `iInfo::getErr`
  virtual std::string getLastRawCommand() const = 0;  ///< as `iInfo::getLastRawCommand`
  virtual std::string getResponseBody() const = 0;    ///< as `iInfo::getResponseBody`
  /// Sends `command` (without a line end) as one line and receives its record, see
  /// `getResponseBody`. SCIP 2.0: -1, nothing is sent. Any thread.
  virtual int doRaw(std::string command) = 0;

 protected:
  ~iSCIP1IF() = default;
};
