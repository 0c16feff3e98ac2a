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
/// One driver per link: two would take each other's answers. Made by
/// `cSensorDriverManager`. Destroying it stops its threads and lets go of the port, but no
/// destructor stops the sensor: call `stopAll()` and `abortScan()` before.
class TARVOLINK_API cSensorDriver : public cInfo {
 public:
  /// A driver over `link`, which must be set: its first use fails an assertion else. Nothing is
  /// sent. Any thread.
  explicit cSensorDriver(boost::shared_ptr<cTarvoLink> link);
  /// A driver over a link of its own, made on `portbuf`, which must be set as `link` above. Any
  /// thread.
  explicit cSensorDriver(boost::shared_ptr<kavTBX::basic_portbuf<char>> portbuf);
  cSensorDriver(const cSensorDriver&) = delete;
  cSensorDriver& operator=(const cSensorDriver&) = delete;
  ~cSensorDriver() override;

  const int& getErr() const override;
  std::string getLastRawCommand() const override;
  std::string getResponseBody() const override;

  /// The sensor's SCIP 1.x commands; never null. Lives as long as the driver. Any thread.
  virtual iSCIP1IF* getSCIP1IF() = 0;
  /// The sensor's scanning interface; never null. Lives as long as the driver. With SCIP 1.x the
  /// first call starts a thread, and throws boost::thread_resource_error when the system has
  /// none left. Any thread.
  virtual iSCIP2IF* getSCIP2IF() = 0;

  /// Decodes values of `width` characters (2, 3 or 4), 6 bits each as the character less
  /// 0x30, most significant first. Empty when the length of `data` is no multiple of
  /// `width`, or `width` below 1. Characters outside 0x30 to 0x6F are not refused and give
  /// values out of range. Any thread.
  static std::vector<int> decode6bit(std::string data, int width);

 protected:
  boost::shared_ptr<cTarvoLink> link;          ///< the line
  boost::shared_ptr<cLockableScanList> scans;  ///< of `iScanList`; set by the derived class
};
