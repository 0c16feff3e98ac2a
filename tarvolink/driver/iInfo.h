#pragma once

#include <string>

#include "tarvolink/export.h"

/// What is known about the sensor. Nothing here talks to it, and nothing fails: the values are
/// those of the last fetch (`iSCIP2IF::fetchVersionStr`, `fetchParameters`, `updateStatus`,
/// `iSCIP1IF::doVersion`). Before the first one texts are empty and numbers 0 (SCIP 1.x: fixed
/// numbers). One caller at a time: do not read them while another thread fetches. Lives as long as
/// the driver; do not delete through this interface.
class TARVOLINK_API iInfo {
 public:
  virtual std::string getVend() const = 0;    ///< vendor, as the sensor reports it
  virtual std::string getProd() const = 0;    ///< product
  virtual std::string getFirm() const = 0;    ///< firmware version
  virtual std::string getProt() const = 0;    ///< protocol version
  virtual std::string getSerial() const = 0;  ///< serial number
  virtual std::string getStatus() const = 0;  ///< the sensor's own description of its state
  virtual int getMinSpot() const = 0;         ///< first usable step
  virtual int getMaxSpot() const = 0;         ///< last usable step
  virtual int getFrontSpot() const = 0;       ///< the step straight ahead
  virtual bool isActivated() const = 0;       ///< true with SCIP 2.0, false with SCIP 1.x
  virtual int getMaxDist() const = 0;         ///< longest valid distance, millimetres
  virtual int getMinDist() const = 0;         ///< shortest valid distance, millimetres

  /// A code word of `cSCIPError`. SCIP 1.x: of the last exchange. SCIP 2.0: of the last read of the
  /// line, 0 or a time-out, never the sensor's status (`cSensorDriverSCIP2::doRaw2` returns that).
  /// The reference follows every later exchange, unguarded. One caller at a time: read it in the
  /// thread that has just called the driver, and only as a hint while other threads call it.
  virtual const int& getErr() const = 0;
  /// The last command line that a SCIP 1.x exchange sent; empty before the first. Any thread.
  virtual std::string getLastRawCommand() const = 0;
  /// The body of the last record received, each line with its line feed; empty if none came. Any
  /// thread.
  virtual std::string getResponseBody() const = 0;

 protected:
  ~iInfo() = default;
};
