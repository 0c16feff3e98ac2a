#pragma once

#include <boost/shared_ptr.hpp>
#include <string>

#include "tarvolink/driver/cSensorDriver.h"
#include "tarvolink/export.h"

/// Finds the sensor behind a serial device: line speed, dialect, driver.
///
/// Everything runs in the caller's thread. One caller at a time for each port, which nobody else
/// uses meanwhile; searches on different ports may run side by side. An empty result: no sensor
/// answered. Nothing is thrown for what a sensor says or a port does.
class TARVOLINK_API cSensorDriverManager {
 public:
  /// The protocol identities that sensors report, by protocol number 0 to 4.
  static const char* const protoId[5];

  /// Opens `device` (a tty's path; open(2), whose failure is told on standard error) at 115200
  /// bits/s, 8N1, and searches on it, see below. A device that is missing or no terminal costs no
  /// time. Else up to 13 detections of about 5 s, minutes each on a line that never falls silent
  /// (see docs/reliability.md). One caller at a time for each device.
  static boost::shared_ptr<cSensorDriver> create(std::string device);

  /// Searches on an open port, which the driver then keeps. One caller at a time for each port.
  static boost::shared_ptr<cSensorDriver> create(
      boost::shared_ptr<kavTBX::basic_portbuf<char>> portbuf);

  /// Searches on `link`: at the port's present speed, then three times at each of 115200,
  /// 500000, 19200 and 57600 bits/s. Sets the port's read time-out to 300 ms for good. On
  /// failure it says so on standard output and standard error and leaves the port at the
  /// last speed tried. One caller at a time for each link.
  static boost::shared_ptr<cSensorDriver> create(boost::shared_ptr<cTarvoLink> link);

  /// One detection at the port's present speed: asks for SCIP 2.0 ("VV", "TM2", "PP"; "RS" where
  /// "TM2" is not known), then for SCIP 1.x ("V") and its switch to SCIP 2.0 ("SCIP2.0", "PP").
  /// Empty at once, with nothing written, when the port is not open or no terminal. One caller at
  /// a time for each link.
  static boost::shared_ptr<cSensorDriver> tryCreate(boost::shared_ptr<cTarvoLink>& link);
};
