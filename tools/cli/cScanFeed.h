#pragma once

#include <chrono>
#include <deque>
#include <mutex>
#include <optional>

#include "tarvoscan/tarvoscan.h"
#include "tools/base/cShutdown.h"
#include "tools/cli/cDevice.h"
#include "tools/cli/rangeOptions.h"

namespace tool {

/// What a command does where the sensor is not there.
enum class ePatience {
  NONE,       ///< it fails
  RECONNECT,  ///< it fails if the sensor was never there, and waits for one that was lost
  WAIT,       ///< it waits for one that was never there, and fails when it is lost
  BOTH        ///< it waits for either
};

/// The scans of a command, from the search for the sensor to the end, with notes for the user of
/// what happens meanwhile. Its state is the scanner's, as far as the command has heard of it:
///
///     SEARCHING --found--> SCANNING --lost--> WAITING --back--> SCANNING
///         |                                      |
///         `-- nobody there: fails, or WAITING    `-- fails, or waits
///
/// Destroying it turns the laser off, within a second. One thread.
class cScanFeed {
 public:
  /// Begins to look for the sensor. All must outlive it.
  cScanFeed(const cDevice& device, const cScanOptions& range, ePatience patience,
            const cShutdown& stop);
  cScanFeed(const cScanFeed&) = delete;
  cScanFeed& operator=(const cScanFeed&) = delete;

  /// The next scan, waiting `timeOut` at most; empty: none came in time, or `stop` was requested.
  /// Throws `cFailure` when the sensor is not there and is not waited for.
  tarvo::tScanPtr next(std::chrono::milliseconds timeOut);

  /// Asks for no scans: the laser goes off when the sensor is found, and then its state is PAUSED.
  void keepLaserOff() { scanner.setLaser(false); }

  /// Whether a sensor was ever found and asked for scans.
  bool isStarted() const { return started; }

  /// How the sensor is, as the command has heard.
  const tarvo::cHealth& getState() const { return state; }

  /// How it is now, with all counters. Those of scans that were not taken: `dropped`.
  tarvo::cHealth getHealth() const;

  /// Whether scans wait to be taken: what `getHealth` counts is then ahead of them.
  bool hasBacklog();

  /// A scan's number: the first of all is 1, and each one that is missing leaves a gap.
  std::uint64_t getNumber(const tarvo::cLaserScan& scan) const { return scan.number - first + 1; }

 private:
  using cClock = std::chrono::steady_clock;

  /// A change of the scanner's state, and when it was.
  struct cNews {
    tarvo::cHealth health;
    cClock::time_point when;
  };

  void hear(const tarvo::cHealth& health);
  void follow();
  void followTo(const cNews& change);
  void noteReturn(cClock::time_point when);
  void noteLoss(const tarvo::cProblem& problem, cClock::time_point when);
  bool isWaiting() const;

  const cDevice& device;
  const ePatience patience;
  const cShutdown& stop;
  std::mutex mutex;
  std::deque<cNews> news;  // under mutex: not heard of yet
  tarvo::cHealth state;
  bool started = false;
  bool hasHinted = false;
  std::string lastNotice;
  std::optional<cClock::time_point> lost;  // since when, having been there; empty: it is not
  std::uint64_t first = 0;                 // number of the first scan; 0: none yet
  tarvo::cScanner scanner;                 // calls `hear` from the start on
  tarvo::cSubscription scans;
};

}  // namespace tool
