#pragma once

#include <boost/shared_ptr.hpp>
#include <string>
#include <vector>

#include "tarvolink/driver/cInfo.h"
#include "tarvolink/driver/iSCIP1IF.h"
#include "tarvolink/driver/iSCIP2IF.h"
#include "tarvolink/export.h"
#include "tarvolink/scan/tLockableList.h"
#include "tarvolink/scip/cTarvoLink.h"

/// A sensor: what is known about it, and the line to it.
///
/// `cSensorDriverManager` makes it. One driver per link: two would take each other's answers.
/// Destroying it stops its threads and releases the port, but does not stop the sensor: call
/// `stopAll()` and `abortScan()` first.
class TARVOLINK_API cSensorDriver : public cInfo {
 public:
  /// A driver over `link`, which must not be empty (assertion at its first use). Nothing is sent.
  /// Any thread.
  explicit cSensorDriver(boost::shared_ptr<cTarvoLink> link);
  /// A driver over a link of its own on `portbuf`, which must not be empty either. Any thread.
  explicit cSensorDriver(boost::shared_ptr<kavTBX::basic_portbuf<char>> portbuf);
  cSensorDriver(const cSensorDriver&) = delete;
  cSensorDriver& operator=(const cSensorDriver&) = delete;
  ~cSensorDriver() override;

  const int& getErr() const override;
  std::string getLastRawCommand() const override;
  std::string getResponseBody() const override;

  /// The sensor's SCIP 1.x commands; never null. They live as long as the driver. Any thread.
  virtual iSCIP1IF* getSCIP1IF() = 0;
  /// The sensor's scanning interface; never null. It lives as long as the driver. With SCIP 1.x the
  /// first call starts a thread and throws boost::thread_resource_error if the system has none
  /// left. Any thread.
  virtual iSCIP2IF* getSCIP2IF() = 0;

  /// Decodes values of `width` characters (2, 3 or 4) each. A character carries 6 bits, its code
  /// less 0x30, most significant first. Empty if the length of `data` is not a multiple of `width`,
  /// or `width` is below 1. Characters outside 0x30 to 0x6F are accepted and give values out of
  /// range. Any thread.
  static std::vector<int> decode6bit(std::string data, int width);

  /// The same without allocating: decodes `data` into `values`, which has room for `size` / `width`
  /// of them. What is left over at the end is not read. Any thread.
  static void decode6bit(const char* data, std::size_t size, int width, int* values);

 protected:
  boost::shared_ptr<cTarvoLink> link;          ///< the line
  boost::shared_ptr<cLockableScanList> scans;  ///< see `iScanList`; the derived class sets it
};
