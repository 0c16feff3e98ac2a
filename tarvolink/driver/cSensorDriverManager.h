#pragma once

#include <boost/shared_ptr.hpp>
#include <string>
#include <vector>

#include "tarvolink/driver/cSensorDriver.h"
#include "tarvolink/export.h"

/// Finds the sensor behind a serial device: line speed, dialect, driver.
///
/// Everything runs in the caller's thread. One caller at a time for each port, which nothing else
/// may use during that time; searches on different ports may run in parallel. An empty result: no
/// sensor answered. Nothing that a sensor sends or a port does makes it throw.
class TARVOLINK_API cSensorDriverManager {
 public:
  /// The protocol identities that sensors report, by protocol number 0 to 4.
  static const char* const protoId[5];

  /// The line speeds at which a search looks for a sensor, in bits per second and in that order.
  /// Any thread.
  static const std::vector<int>& getSearchSpeeds();

  /// How often a search tries each of them.
  static constexpr int SEARCH_PASSES = 3;
  /// The read time-out of a search, in milliseconds.
  static constexpr int SEARCH_TIMEOUT = 300;

  /// Opens `device` (the path of a tty; open(2), whose failures are printed on standard error) at
  /// 115200 bits/s, 8N1, and searches on it, see below. Returns at once if the device is missing or
  /// not a terminal. Otherwise it takes up to 13 detections of about 5 s, or of minutes on a line
  /// that never falls silent (see docs/reliability.md). One caller at a time for each device.
  static boost::shared_ptr<cSensorDriver> create(std::string device);

  /// Searches on an open port, which the driver then keeps. One caller at a time for each port.
  static boost::shared_ptr<cSensorDriver> create(
      boost::shared_ptr<kavTBX::basic_portbuf<char>> portbuf);

  /// Searches on `link`: at the port's present speed, then `SEARCH_PASSES` times at each of
  /// `getSearchSpeeds`. Sets the port's read time-out to `SEARCH_TIMEOUT` for good. Failure: prints
  /// messages on standard output and standard error and leaves the port at the last speed tried.
  /// One caller at a time for each link.
  static boost::shared_ptr<cSensorDriver> create(boost::shared_ptr<cTarvoLink> link);

  /// One detection at the port's present speed: tries SCIP 2.0 ("VV", "TM2", "PP"; "RS" if the
  /// sensor does not know "TM2"), then SCIP 1.x ("V") and its switch to SCIP 2.0 ("SCIP2.0", "PP").
  /// Returns empty at once, and writes nothing, if the port is not open or not a terminal. One
  /// caller at a time for each link.
  static boost::shared_ptr<cSensorDriver> tryCreate(boost::shared_ptr<cTarvoLink>& link);
};
