#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

#include "tarvoscan/cScannerOptions.h"
#include "tarvoscan/scan/cScanMaker.h"
#include "tarvoscan/scan/cScanRange.h"
#include "tarvoscan/scan/cScanRecord.h"
#include "tarvoscan/scanner/cCommandQueue.h"
#include "tarvoscan/scanner/cHealthBoard.h"
#include "tarvoscan/scanner/cScanHub.h"
#include "tarvoscan/search/cConversation.h"
#include "tarvoscan/search/cSensorFinder.h"

namespace tarvo {

/// What a scanner's parts share. The reading thread, where a member does not say otherwise.
struct cScannerParts {
  explicit cScannerParts(const cScannerOptions& options)
      : options(options), board(options.onHealth) {}

  const cScannerOptions options;
  cWaker waker;                           ///< any thread
  cHealthBoard board;                     ///< any thread reads
  cScanHub hub;                           ///< any thread subscribes
  cCommandQueue commands;                 ///< any thread asks
  std::atomic<bool> isLaserWanted{true};  ///< any thread
  std::uint64_t nextNumber = 1;           ///< of the next scan
};

/// One connection to an identified sensor, from its start to its loss: scans in either dialect, and
/// the host's commands in between. The reading thread.
///
///     start() --> scanning <--laser--> paused
///                     \                 /
///                      lost: a problem, or the request to stop
class cScanSession {
 public:
  /// The sensor at the other end of `talk` scans `range`. All must outlive it.
  cScanSession(cScannerParts& parts, cConversation& talk, const cSensorInfo& sensor,
               const cScanRange& range);

  /// Scans until the sensor is lost, which is the result, or the end is asked for: then it is none.
  /// `notice` is what is not as it should be meanwhile.
  cProblem run(const cProblem& notice);

  /// Turns the laser off, without waiting for an answer: it may be behind a record on the line.
  void end();

 private:
  using cClock = cScanPort::cClock;

  cProblem scan();
  cProblem pause();
  cProblem startStream();
  cProblem stream();
  cProblem request();
  bool receive(cClock::time_point deadline, bool isWakeable);
  void judge(bool isWhole);
  bool takeScan();
  bool isAnswered();
  cProblem checkSilence();
  cProblem describeLoss() const;
  void watchLine();
  double getLineRate() const;
  void serve();
  void serveFetch(const std::shared_ptr<cCommand>& command);
  void serveLaser(const std::shared_ptr<cCommand>& command);
  void finish(std::shared_ptr<cCommand>& command, const cAnswer& answer);
  bool learn(eInformation kind, const cAnswer& answer);
  bool isOver() const;
  std::chrono::milliseconds getPatience() const;
  std::chrono::milliseconds getPeriod() const;

  cScannerParts& parts;
  cConversation& talk;
  std::shared_ptr<const cSensorInfo> sensor;
  const cScanRange range;
  cScanRecord decoder;
  cScanMaker maker;
  cProblem notice;
  std::string echo;              // of the stream, or of the latest request
  bool isOdd = false;            // of SCIP 1.x requests
  std::string lastStatus;        // of the latest record of the stream that was no good scan
  cClock::time_point lastGood;   // scan, or the start
  cClock::time_point lastHeard;  // anything
  cClock::time_point nextLook;   // at the line's rate
  cClock::time_point nextRequest;
  std::uint64_t damagedBefore = 0;  // the latest look at the line
  bool isStreaming = false;
  std::shared_ptr<cCommand> fetching;  // its answer is awaited between the scans of a stream
  std::string fetchEcho;
  cClock::time_point fetchEnd;
  std::shared_ptr<cCommand> switching;  // the laser
};

}  // namespace tarvo
