#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "tarvoscan/cHealth.h"
#include "tarvoscan/cScannerOptions.h"
#include "tarvoscan/export.h"
#include "tarvoscan/iScanSource.h"

namespace tarvo {

/// What became of a command to the sensor: success where `problem` is empty.
struct cCommandResult {
  std::string problem;  ///< why it failed: what was sent, and what came back; "": it did not fail
  std::shared_ptr<const cSensorInfo> sensor;  ///< on success what is known about the sensor now

  /// Whether it succeeded.
  explicit operator bool() const { return problem.empty(); }
};

/// One sensor that looks after itself: it is found, identified, started, and found again when it
/// was lost, in a thread of its own, until it is stopped.
///
///     start() --> SEARCHING --found--> SCANNING <--setLaser()--> PAUSED
///                  ^     \                |                        |
///                  |      no answer       silent, damaged,         gone
///              it is back   \             gone, refuses            |
///                  |         v            v                        |
///                  +------- WAITING <-----+------------------------+
///     every state --stop(), or lost without comesBack--> STOPPED
///
/// While it is not STOPPED the port is open where that is possible, and locked against other
/// programs (flock(2)). STOPPED closes it. `stop` and the destructor turn the laser off first
/// ("QT"; SCIP 1.x: "L1"), and return within a second whatever the sensor does.
///
/// Nothing is printed and nothing is thrown for what a device does: `getHealth` says what is wrong.
/// The thread blocks all signals except those of its own faults.
///
/// Any thread, for every operation. In a callback, which runs in the reading thread, `stop` and the
/// destructor return at once and take effect when the callback returns; a command fails there.
class TARVOSCAN_API cScanner : public iScanSource {
 public:
  /// A scanner that has been started. Throws only std::bad_alloc.
  explicit cScanner(const cScannerOptions& options);
  ~cScanner() override;
  cScanner(const cScanner&) = delete;
  cScanner& operator=(const cScanner&) = delete;

  /// Starts a scanner that is STOPPED: it searches again, and begins with an empty problem. Nothing
  /// happens in another state. Where the system has no thread left it stays STOPPED with
  /// `eProblem::NO_THREAD`.
  void start();

  /// Turns the laser off, closes the port and ends the thread; it is STOPPED then.
  void stop();

  /// Asks for the same and returns at once. Async-signal-safe: a signal handler may call it.
  void requestStop() noexcept;

  /// Whether it is STOPPED, or is about to be.
  bool isStopped() const;

  cSubscription subscribe(std::size_t depth) override;
  std::shared_ptr<void> subscribe(std::function<void(const tScanPtr&)> callback) override;
  tScanPtr next(std::chrono::milliseconds timeout) override;

  /// How it is.
  cHealth getHealth() const;

  /// Asks a sensor that is scanning or paused for its state in its own words ("II"; a SCIP 1.x
  /// sensor has none). Waits up to 5 s.
  cCommandResult fetchStatus();

  /// Asks it for its identity anew ("VV"; SCIP 1.x: "V"). Waits up to 5 s.
  cCommandResult fetchVersion();

  /// Turns the laser off, and with it the scanning (PAUSED: "QT"; SCIP 1.x: "L1"), or on again
  /// ("MD", "MS"; SCIP 1.x: "L0"). It stays so when the sensor is lost and found again. Waits up to
  /// 5 s.
  cCommandResult setLaser(bool on);

 private:
  class TARVOSCAN_LOCAL cImpl;
  std::shared_ptr<cImpl> impl;
};

}  // namespace tarvo
