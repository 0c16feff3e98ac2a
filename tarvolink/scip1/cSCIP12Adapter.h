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
/// One pass of the worker: take a scan, keep the list at 30 scans (the oldest go), set the state,
/// raise the scan signal, serve one request from the queue, wait for the end of the period.
/// `stopAll` takes effect after the wait under way; only `finalize` cuts that short.
///
/// What a host should know of it:
/// - **Catching up.** Each scan is due a period after the one before it was due. When scans take
///   longer than the period, or the process stood still, the worker scans back to back until it is
///   on time again: a pause of 10 s at 0.1 s a scan is followed by up to 100 scans in a burst.
/// - **The queue has no limit.** While it scans, the worker serves one request a period.
///   `startStoringScan` called more often than that piles up requests, and memory.
/// - **The scan signal stays raised** until a `waitScan` takes it, and does not count. A wait may
///   return at once for a scan that has been taken already, or for one of an earlier start.
/// - **A dead line is reported once.** A counted scan retries what fails. While the line is hung up
///   or takes no bytes only the first attempt of a start writes to it, and prints
///   "basic_portbuf::write: ..."; the others fail without a word until the line is back.
///
/// Any thread, for every operation not marked otherwise; `iInfo` is for one caller at a time.
/// Its destruction drops the requests that it has not served. The driver owns it and outlives it. A
/// derived class calls `finalize` in its own destructor.
class TARVOLINK_API cSCIP12Adapter : public kavTBX::cThread,
                                     public virtual iSCIP2IF,
                                     public virtual iInfo {
 public:
  /// A request to the worker: what to do, and for code 4 the line speed.
  struct reqPacket {
    std::int32_t code;  ///< 0 "L0", 1 "L1", 2 go idle, 3 scan, 4 "S", 5 exit; others are ignored
    std::int32_t arg;   ///< bits per second
  };

  /// An adapter for `driver` (not null), with that driver's step range. `run` starts the worker.
  explicit cSCIP12Adapter(cSensorDriverSCIP1* driver);
  ~cSCIP12Adapter() override;

  // What the driver returns.
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
  /// Takes the oldest scan if `i` is the number of scans less 1. Otherwise empty, and nothing is
  /// taken.
  boost::shared_ptr<cScan> getScanLast(int i) override;
  boost::shared_ptr<cScan> getScanFirst() override;
  /// Takes the scan at place `i`, the oldest being 0; empty if there is none.
  boost::shared_ptr<cScan> getScanFirst(int i) override;
  /// Removes all scans.
  void purgeScan() override;

  /// Asks the worker for "L0"; 0 in any state.
  int startStoringScan() override;
  /// Ends scanning and withdraws starts that the worker has not begun; 0. A scan under way is still
  /// delivered.
  int stopAll() override;
  /// Starts two scans at the period of the last start; 0, or -1 unless idle. The last argument is
  /// ignored.
  int getStoredScan(int st, int ed, int sk, int) override;
  /// Asks the worker for "S" with `baud`; 1, or 0 unless idle.
  int setCommSpeed(int baud) override;
  int resetURG() override;         ///< 0, does nothing
  int fetchVersionStr() override;  ///< "V" in the caller's thread, see `doVersion`
  int fetchParameters() override;  ///< 0, does nothing
  int updateStatus() override;     ///< 0, does nothing
  /// Starts scanning steps `st` to `ed`, `sk` steps a point, every `ssk` tenths of a second:
  /// `count` + 1 scans, or, for 0, until stopped or until a scan fails. 1: the worker will begin.
  /// 0: it is not idle, or another start came first while this one printed its two lines on
  /// standard error; nothing changes. After a stop or a counted end the worker first waits for the
  /// end of that period, unless it was still taking that period's scan. `mx` is only printed.
  int startScan(int st, int ed, int sk, int ssk, int count, int mx) override;
  /// Does not stop: while scanning it asks for the scanning state once more; 0. See `stopAll`.
  int abortScan() override;
  /// Goes on with a counted scan that was stopped; 0, or -1 if there is none.
  int resumeScan() override;
  /// Scans still to take, less one; -1 without end; 0 unless scanning.
  int scansToGo() override;
  /// Waits for an attempt to scan that no wait has reported yet, without limit; 0. Without a
  /// running scan it waits for the next start.
  int waitScan() override;
  /// The same for up to `ms` milliseconds; whether there was an attempt. It may have failed, or its
  /// scan may have been taken: look at the list.
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

  kavTBX::cMessQueue<reqPacket> queue;  ///< requests to the worker; locks itself

 private:
  /// What one pass of the worker began with.
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
  bool tryScan(const cPass& pass);
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
  int scansLeft = -1;   // scans still to take, less one; -1: without end
  double interval = 0;  // seconds
  kavTBX::cBSync scanSignal;
  boost::posix_time::ptime lastTime{boost::gregorian::date(1970, 1, 1)};
  boost::posix_time::ptime nextTime;
  boost::posix_time::time_duration period;
  boost::condition wakeCond;  // notified by the end only: stops and starts keep to the period
  boost::mutex wakeMutex;
  unsigned generation = 0;  // of the start that the fields above belong to
  // Local time runs on the steady clock from here, so that setting the clock moves no scan.
  boost::posix_time::ptime scheduleTime;
  boost::chrono::steady_clock::time_point scheduleStart;

  unsigned latestGeneration = 0;  // of the latest pass; worker only
};
