#pragma once

#include <string>

#include "tarvolink/export.h"

/// What is known about the sensor. Nothing here talks to it, and nothing fails: the values are
/// those of the last fetch (`iSCIP2IF::fetchVersionStr`, `fetchParameters`, `updateStatus`,
/// `iSCIP1IF::doVersion`), texts empty and numbers 0 before (SCIP 1.x: those of its sensors). One
/// caller at a time: read them where no other thread fetches meanwhile. The lifetime is the
/// driver's; nobody deletes through this face.
class TARVOLINK_API iInfo {
 public:
  virtual std::string getVend() const = 0;    ///< vendor, as the sensor reports it
  virtual std::string getProd() const = 0;    ///< product
  virtual std::string getFirm() const = 0;    ///< firmware version
  virtual std::string getProt() const = 0;    ///< protocol version
  virtual std::string getSerial() const = 0;  ///< serial number
  virtual std::string getStatus() const = 0;  ///< state of the sensor in its own words
  virtual int getMinSpot() const = 0;         ///< first usable step
  virtual int getMaxSpot() const = 0;         ///< last usable step
  virtual int getFrontSpot() const = 0;       ///< the step straight ahead
  virtual bool isActivated() const = 0;       ///< true with SCIP 2.0, false with SCIP 1.x
  virtual int getMaxDist() const = 0;         ///< longest valid distance, millimetres
  virtual int getMinDist() const = 0;         ///< shortest valid distance, millimetres

  /// The code word (`cSCIPError`) of the last exchange with SCIP 1.x; with SCIP 2.0 that of the
  /// last read of the line, which is 0 or a time-out and never the sensor's status (that is what
  /// `cSensorDriverSCIP2::doRaw2` returns). The reference shows each later exchange too and
  /// cannot be guarded. One caller at a time: read it in the thread that has just called the
  /// driver, and take it for a hint while another talks.
  virtual const int& getErr() const = 0;
  /// The last command line that a SCIP 1.x exchange sent; empty before. Any thread.
  virtual std::string getLastRawCommand() const = 0;
  /// The body of the last record received, each line with its line feed; empty where none came.
  /// Any thread.
  virtual std::string getResponseBody() const = 0;

 protected:
  ~iInfo() = default;
};
