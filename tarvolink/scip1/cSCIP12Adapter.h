#pragma once

#include <boost/chrono.hpp>
#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <boost/shared_ptr.hpp>
#include <boost/thread/condition.hpp>
#include <boost/thread/mutex.hpp>
#include <cstdint>
#include <string>

#include "tarvolink/base/cBSync.h"
#include "tarvolink/base/cMessQueue.h"
#include "tarvolink/base/cThread.h"
#include "tarvolink/driver/iInfo.h"
#include "tarvolink/driver/iSCIP2IF.h"
#include "tarvolink/export.h"

class cSensorDriverSCIP1;

/// The scanning interface of SCIP 2.0 on a sensor that speaks SCIP 1.x: a worker that takes one
/// scan after the other with the driver's "G", at a fixed period.
///
///     idle --start (3)--> scanning --counted out, failed endless scan, stopAll--> idle
///     any state --finalize (5)--> exiting
///
/// Requests go to the worker through a queue; it looks there once a period while it scans. One
/// pass: take a scan, keep the list at 30 scans (the oldest go), set the state, raise the scan
/// signal, serve one request, wait for the period's end. When scans take longer than the period it
/// scans back to back until it has caught up. `stopAll` takes effect after the wait
/// under way; only the end cuts that short.
///
/// Any thread, for every operation not marked otherwise; `iInfo` is for one caller at a time. What
/// was asked for and not begun when it is destroyed is dropped. The driver owns it and outlives it.
class TARVOLINK_API cSCIP12Adapter : public kavTBX::cThread,
                                     public virtual iSCIP2IF,
                                     public virtual iInfo {
 public:
  /// A request to the worker: what to do, and for code 4 the line speed.
  struct reqPacket {
    std::int32_t code;  ///< 0 "L0", 1 "L1", 2 go idle, 3 scan, 4 "S", 5 exit; others are ignored
    std::int32_t arg;   ///< bits per second
  };

  /// An adapter for `driver` (not null), whose step range it takes over; the worker does not run
  /// yet.
  explicit cSCIP12Adapter(cSensorDriverSCIP1* driver);
  ~cSCIP12Adapter() override;

  // The driver's answers.
  std::string getVend() const override;
  std::string getProd() const override;
  std::string getFirm() const override;
  std::string getProt() const override;
  std::string getSerial() const override;
  int getMinSpot() const override;
  int getMaxSpot() const override;
  int getFrontSpot() const override;
  std::string getStatus() const override;
  int getMinDist() const override;
  int getMaxDist() const override;
  bool isActivated() const override;
  const int& getErr() const override;
  std::string getLastRawCommand() const override;
  std::string getResponseBody() const override;

  int getScanNum() override;
  boost::shared_ptr<cScan> getScanLast() override;
  /// The oldest scan if `i` is the number of scans less 1; else empty, with nothing taken.
  boost::shared_ptr<cScan> getScanLast(int i) override;
  boost::shared_ptr<cScan> getScanFirst() override;
  /// Takes the scan at place `i`, the oldest being 0; empty, with nothing taken, if there is none.
  boost::shared_ptr<cScan> getScanFirst(int i) override;
  /// Removes all scans.
  void purgeScan() override;

  /// Asks the worker for "L0"; 0 in any state.
  int startStoringScan() override;
  /// Ends the scan, and takes back starts that the worker has not begun; 0. A scan under way is
  /// still delivered.
  int stopAll() override;
  /// Starts two scans at the last period; 0, or -1 unless idle. The last argument is not used.
  int getStoredScan(int st, int ed, int sk, int) override;
  /// Asks the worker for "S" with `baud`; 1, or 0 unless idle.
  int setCommSpeed(int baud) override;
  int resetURG() override;         ///< 0, does nothing
  int fetchVersionStr() override;  ///< "V" in the caller's thread, see `doVersion`
  int fetchParameters() override;  ///< 0, does nothing
  int updateStatus() override;     ///< 0, does nothing
  /// Starts scanning steps `st` to `ed`, `sk` steps a point, every `ssk` tenths of a second,
  /// `count` + 1 scans, or, for 0, until stopped or until a scan fails. 1: asked for. 0: not, since
  /// it is not idle. After a stop or a counted end the worker first waits out the period under way,
  /// unless it was still taking that period's scan. `mx` is only told on standard error.
  int startScan(int st, int ed, int sk, int ssk, int count, int mx) override;
  /// Does not stop: while scanning it asks for the scanning state once more; 0. See `stopAll`.
  int abortScan() override;
  /// Goes on with a counted scan that was stopped; 0, or -1 if there is none.
  int resumeScan() override;
  /// Scans still to take, less one; -1 without end; 0 unless scanning.
  int scansToGo() override;
  /// Waits for the next attempt to scan, without limit; 0. Needs a running scan, or it waits for
  /// the next start.
  int waitScan() override;
  /// Waits for the next attempt to scan, up to `ms` milliseconds; whether there was one. A failed
  /// one counts: look at the list.
  bool waitScan(int ms) override;
  /// Whether the worker takes scans; false also until it has begun with the first.
  bool isScanning() override;

  /// Takes the next request, waiting for one, and serves it. Worker only.
  virtual void processRequest();

  /// The scan period for `seconds` (0 and above): the milliseconds of the exact product with 1000,
  /// truncated.
  static std::int64_t toMilliseconds(double seconds);

 protected:
  void threadInit() override;
  void threadFunc() override;
  void threadFinReq() override;

 private:
  /// What one pass of the worker was begun with.
  struct cPass {
    int start;
    int end;
    int cluster;
    unsigned generation;
    boost::chrono::steady_clock::time_point begin;
    int state;
    bool hasFailed;
  };

  int getState();
  void setState(int newState);
  void forgetStarts();
  void askForScanning();
  void beginSchedule();
  boost::posix_time::ptime getLocalTime() const;
  boost::posix_time::time_duration getPause(const cPass& pass) const;
  void setRange(int st, int ed, int sk, int count);
  void takeScan(cPass& pass);
  void countScan(const cPass& pass);
  void runPass(cPass& pass);
  cPass beginPass();
  void waitForNext(const cPass& pass);
  bool hasRequests();
  bool changeState(int code);
  void execute(const reqPacket& request);

  cSensorDriverSCIP1* driver;
  const int maxScans = 30;

  // Under wakeMutex, which is taken after the queue's mutex where both are.
  int state = 0;
  int start;
  int end;
  int cluster = 1;
  int scansLeft = -1;   // -1: without end
  double interval = 0;  // seconds
  kavTBX::cBSync scanSignal;
  kavTBX::cMessQueue<reqPacket> queue;
  boost::posix_time::ptime lastTime{boost::gregorian::date(1970, 1, 1)};
  boost::posix_time::ptime nextTime;
  boost::posix_time::time_duration period;
  boost::condition wakeCond;
  boost::mutex wakeMutex;
  unsigned generation = 0;  // of the start that the fields above belong to
  // Local time runs on the steady clock from here, so that setting the clock moves no scan.
  boost::posix_time::ptime scheduleTime;
  boost::chrono::steady_clock::time_point scheduleStart;
};
