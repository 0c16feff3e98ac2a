#pragma once

#include <atomic>
#include <boost/shared_ptr.hpp>
#include <boost/thread/mutex.hpp>
#include <memory>
#include <string>
#include <thread>

#include "tarvolink/driver/cSensorDriver.h"
#include "tarvolink/export.h"
#include "tarvolink/scan/cScanFactory.h"

class cSCIP12Adapter;

/// A sensor that speaks SCIP 1.x.
///
/// Any thread, for every operation. An exchange and the decoding of its answer are one step:
/// a caller waits its turn while another thread, or the adapter's worker, talks. Results are 0
/// for success, the sensor's status digit 1 to 9, or -1 for a failed exchange; `getErr()` then is
/// `EINVALID_ECHO` (no answer in time, or another command's) or `EINVALID_STATUS`. `iInfo` is for
/// one caller at a time, as ever.
///
/// The sensor does not tell its geometry: steps 44 to 724 of 1024, front 384, distances 20 to
/// 4095 mm are given. `isActivated()` is false.
class TARVOLINK_API cSensorDriverSCIP1 : public cSensorDriver, public virtual iSCIP1IF {
 public:
  /// A driver over `link`, through which nobody else talks.
  explicit cSensorDriverSCIP1(boost::shared_ptr<cTarvoLink> link);

  /// Stops the adapter, if there is one, within the exchange under way.
  ~cSensorDriverSCIP1() override;

  /// "Sensor works well.", without asking the sensor.
  std::string getStatus() const override;
  /// The latest exchange's, its success 0x400 included. One caller at a time.
  const int& getErr() const override;
  /// Waits for the exchange under way, like the next one.
  std::string getLastRawCommand() const override;
  std::string getResponseBody() const override;
  iSCIP1IF* getSCIP1IF() override;
  /// The adapter, made and started by the first call. It says so on standard error, each
  /// time. Throws boost::thread_resource_error when the system has no thread left.
  iSCIP2IF* getSCIP2IF() override;

  /// "V": fills vendor, product, firmware, protocol and serial, each the text after the first
  /// ":" of its line. On failure nothing changes.
  int doVersion() override;

  /// "G": takes one scan from step `start` to step `end` (0 to 999), `cluster` steps a point (0 to
  /// 99), into the list. 0 also when its data could not be decoded, see `addScan`.
  int doScan(int start, int end, int cluster) override;

  /// "L0" for on, "L1" for off.
  int doLaser(bool on) override;

  /// "S": asks for `baud` bits per second. The host's side of the line follows only after a
  /// result that is not 0; after 0 it stays as it is.
  int doSpeed(int baud) override;

  /// Sends `cmd` as one line and receives its record.
  int doRaw(std::string cmd) override;

  /// Decodes the latest record, distances of two characters, into a scan in the list. Empty for
  /// a line of odd length. A number of points that is not the one asked for ends the process
  /// (assertion), with a message: the answer is another command's.
  boost::shared_ptr<cScan> addScan(int start, int end, int cluster);

 protected:
  /// The right to talk and to decode: the link's mutex, taken once by a thread however deeply it
  /// nests.
  class cTurn {
   public:
    explicit cTurn(const cSensorDriverSCIP1& driver);  ///< waits for it
    ~cTurn();                                          ///< gives it back
    cTurn(const cTurn&) = delete;
    cTurn& operator=(const cTurn&) = delete;

   private:
    const cSensorDriverSCIP1& driver;
    const bool isOutermost;
  };

  /// Appends `scan` to the list, unless it is empty; the result is `scan`. Without the turn.
  boost::shared_ptr<cScan> publish(boost::shared_ptr<cScan> scan);

  cScanFactory factory;  ///< of the scan being decoded; under the turn

 private:
  friend class cSCIP12Adapter;  // keeps the list of scans short

  boost::shared_ptr<cScan> decode(int start, int end, int cluster);

  std::unique_ptr<cSCIP12Adapter> adapter;  // under adapterMutex
  boost::mutex adapterMutex;
  mutable std::atomic<std::thread::id> turnHolder{std::thread::id()};
};
