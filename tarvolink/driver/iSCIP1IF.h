#pragma once

#include <string>

#include "tarvolink/export.h"

/// The command set of SCIP 1.x. Every operation blocks for one exchange; results are 0 for
/// success, -1 for a failed exchange, and from a SCIP 1.x sensor its status digit 1 to 9.
/// How a SCIP 2.0 driver answers stands in `cSensorDriverSCIP2`.
class TARVOLINK_API iSCIP1IF {
 public:
  /// Asks for the version ("V") and fills the texts of `iInfo`.
  virtual int doVersion() = 0;
  /// Takes one scan from step `start` to step `end` ("G"), `cluster` steps a point, into
  /// the list of scans.
  virtual int doScan(int start, int end, int cluster) = 0;
  /// Switches the laser ("L").
  virtual int doLaser(bool on) = 0;
  /// Changes the line speed ("S"), bits per second.
  virtual int doSpeed(int baud) = 0;
  virtual const int& getErr() const = 0;              ///< as in `iInfo`
  virtual std::string getLastRawCommand() const = 0;  ///< as in `iInfo`
  virtual std::string getResponseBody() const = 0;    ///< as in `iInfo`
  /// Sends one command line and receives its record.
  virtual int doRaw(std::string command) = 0;

 protected:
  ~iSCIP1IF() = default;
};
