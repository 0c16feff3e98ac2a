#pragma once

#include <atomic>
#include <boost/shared_ptr.hpp>
#include <boost/thread/mutex.hpp>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "tarvolink/driver/cSensorDriver.h"
#include "tarvolink/export.h"
#include "tarvolink/scan/cScanFactory.h"

class cSCIP12Adapter;

/// A sensor that speaks SCIP 1.x.
///
/// Any thread, for every operation; `iInfo` is for one caller at a time. An exchange and the
/// decoding of its answer are one step: a caller waits for its turn while another thread, or the
/// adapter's worker, talks. Turns are given in the order of arrival, so that beside a worker that
/// scans back to back a caller waits for one exchange at most.
///
/// Results are 0 for success, the sensor's status digit 1 to 9, or -1 for a failed exchange;
/// `getErr()` then is `EINVALID_ECHO` (no answer in time, or another command's) or
/// `EINVALID_STATUS`. The answer to a failed exchange may still come. So the next exchange begins
/// by waiting until the line has been silent for 0.35 s, for 2.5 s at most, and discards what came:
/// otherwise it would take that answer for its own, and every later one the answer before its own.
///
/// The sensor does not report its geometry. On all of them it is steps 44 to 724 of 1024, front
/// 384, and distances of 20 to 4095 mm. `isActivated()` is false.
class TARVOLINK_API cSensorDriverSCIP1 : public cSensorDriver, public virtual iSCIP1IF {
 public:
  /// A driver over `link`, which nobody else talks through.
  explicit cSensorDriverSCIP1(boost::shared_ptr<cTarvoLink> link);

  /// Stops the adapter, if there is one, within the exchange under way.
  ~cSensorDriverSCIP1() override;

  /// "Sensor works well.", without asking the sensor.
  std::string getStatus() const override;
  /// The code word of the latest exchange; 0x400 is a success. One caller at a time.
  const int& getErr() const override;
  /// Waits for its turn, like the next one.
  std::string getLastRawCommand() const override;
  std::string getResponseBody() const override;
  iSCIP1IF* getSCIP1IF() override;
  /// The adapter, made and started by the first call. Each call prints lines about that on standard
  /// error. Throws boost::thread_resource_error when the system has no thread left.
  iSCIP2IF* getSCIP2IF() override;

  /// "V": fills vendor, product, firmware, protocol and serial, each the text after the first
  /// ":" of its line. On failure nothing changes.
  int doVersion() override;

  /// "G": takes one scan from step `start` to step `end` (0 to 999), `cluster` steps a point (0 to
  /// 99), into the list. 0 also when its data cannot be decoded, see `addScan`.
  int doScan(int start, int end, int cluster) override;

  /// The command line that `doScan` sends. Any thread.
  static std::string makeScanCommand(int start, int end, int cluster);
  /// The command line that `doLaser` sends. Any thread.
  static const char* makeLaserCommand(bool on) { return on ? "L0" : "L1"; }
  /// The command line that `doSpeed` sends. Any thread.
  static std::string makeSpeedCommand(int baud);

  /// "L0" for on, "L1" for off.
  int doLaser(bool on) override;

  /// "S": asks for `baud` bits per second. The host's side of the line is set to `baud` only when
  /// the result is not 0; after 0 it stays as it is.
  int doSpeed(int baud) override;

  /// Sends `cmd` as one line and receives its record.
  int doRaw(std::string cmd) override;

  /// Decodes the latest record, distances of two characters, into a scan in the list. Empty for
  /// a line of odd length. Another number of points than asked for is another command's answer, and
  /// ends the process (assertion) with a message.
  boost::shared_ptr<cScan> addScan(int start, int end, int cluster);

 protected:
  /// Holds the line for one exchange and the decoding of its answer. A thread may nest them: the
  /// outermost one owns the line.
  class cExchangeLock {
   public:
    explicit cExchangeLock(const cSensorDriverSCIP1& driver);  ///< waits for the line
    ~cExchangeLock();                                          ///< releases it
    cExchangeLock(const cExchangeLock&) = delete;
    cExchangeLock& operator=(const cExchangeLock&) = delete;

   private:
    const cSensorDriverSCIP1& driver;
    const bool isOwner;
  };

  /// Appends `scan` to the list, unless it is empty; returns `scan`. Not under a
  /// `cExchangeLock`: the list has a lock of its own.
  boost::shared_ptr<cScan> publish(boost::shared_ptr<cScan> scan);

  cScanFactory factory;  ///< of the scan being decoded; under `cExchangeLock`

 private:
  friend class cSCIP12Adapter;  // keeps the list of scans short, and off a dead line

  void waitForTurn() const;
  void endTurn() const;
  bool isStillDead() const;
  bool hasFailed() const;
  void awaitSilence();
  boost::shared_ptr<cScan> decode(int start, int end, int cluster);

  std::unique_ptr<cSCIP12Adapter> adapter;  // under adapterMutex
  boost::mutex adapterMutex;
  std::atomic<bool> hasMetDeadLine{false};  // the latest exchange has, and printed why

  // Who talks next. A mutex alone lets a worker that scans back to back take it again before any
  // caller who waits has woken.
  mutable std::mutex turnMutex;
  mutable std::condition_variable turnEnded;
  mutable std::uint64_t nextTurn = 0;     // of who comes next; under turnMutex
  mutable std::uint64_t currentTurn = 0;  // of who talks, or may; under turnMutex
  mutable std::atomic<std::thread::id> lineOwner{std::thread::id()};
};
