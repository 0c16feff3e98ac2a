#include "tools/cScanRun.h"

#include <fmt/format.h>

#include <algorithm>
#include <stdexcept>

#include "tools/cFailure.h"
#include "tools/plural.h"
#include "tools/printable.h"

namespace tool {

namespace {

constexpr int START_TRIES = 3;  // the library gives a slow sensor 200 ms to acknowledge
constexpr double MIN_TIMEOUT_S = 2;
constexpr double PATIENCE_PERIODS = 3;
constexpr std::size_t STATUS_SIZE = 2;  // without the sum that SCIP 2.0 adds

}  // namespace

cScanRun::cScanRun(const cSensor& sensor, const cScanRange& range, const cShutdown& stop,
                   cTally& tally)
    : sensor(sensor),
      scanner(sensor.scanner()),
      range(range),
      stop(stop),
      tally(tally),
      patience(std::max(MIN_TIMEOUT_S, PATIENCE_PERIODS * range.getPeriod())) {
  start();
  tally.isStarted = true;
  droppedBefore = tally.dropped;
}

cScanRun::~cScanRun() {
  if (sensor.isGone()) return;
  // Until the record under way has ended nothing is sent, and damage may have taken its end.
  sensor.limitRecords(std::chrono::duration_cast<std::chrono::milliseconds>(patience));
  // Rules that hold on every dialect: stopAll first, then abortScan.
  scanner.stopAll();
  try {
    scanner.abortScan();
  } catch (const std::out_of_range&) {
    // A scan still waiting could not be decoded; the sensor has stopped all the same.
  }
}

void cScanRun::start() {
  for (int i = 0; i < START_TRIES && !stop.isRequested(); ++i) {
    if (range.start(scanner) >= 0) return;
    scanner.stopAll();
  }
  if (stop.isRequested()) return;
  throw cTransientError(
      eExit::BAD_INPUT,
      "the sensor does not start scanning (its answer, if any, is above). Look at what "
      "'tarvolink info' says of its status, and switch it off and on.");
}

boost::shared_ptr<cScan> cScanRun::nextWithin(std::chrono::milliseconds timeOut) {
  auto scan = takeGood();
  if (!scan) {
    if (silence > patience || sensor.isGone()) fail();
    waitABit(timeOut);
    scan = takeGood();
  }
  if (scan) {
    silence = silence.zero();
    droppedBefore = tally.dropped;
  }
  return scan;
}

boost::shared_ptr<cScan> cScanRun::takeGood() {
  while (auto scan = takeAny()) {
    if (scan->points.size() == range.getPoints()) return scan;
    ++tally.dropped;
  }
  return {};
}

boost::shared_ptr<cScan> cScanRun::takeAny() {
  try {
    return scanner.getScanFirst();
  } catch (const std::out_of_range&) {
    ++tally.dropped;
    return {};
  }
}

void cScanRun::waitABit(std::chrono::milliseconds timeOut) {
  const auto before = cClock::now();
  try {
    const bool isAnswered = scanner.waitScan(static_cast<int>(timeOut.count()));
    if (isAnswered && !scanner.isScanning()) goOn();
  } catch (const std::out_of_range&) {
    ++tally.dropped;
  }
  const bool wasShort = silence < patience / 2;
  // A process that was stopped (Ctrl-Z) has not waited for the sensor all that time.
  silence += std::min<cClock::duration>(cClock::now() - before, 2 * timeOut);
  if (wasShort && silence >= patience / 2) heardHalfway = sensor.getHeard();
}

/// A SCIP 1.x scan ends by one answer that fails.
void cScanRun::goOn() {
  ++tally.dropped;
  range.start(scanner);
}

void cScanRun::fail() const { throw cTransientError(eExit::SCANS_STOPPED, getTrouble()); }

std::string cScanRun::getTrouble() const {
  if (sensor.isGone()) {
    return "the device has gone in the middle of a scan: unplugged, or without power. Look at its "
           "plug.";
  }
  const double waited = std::chrono::duration<double>(patience).count();
  const bool isDropping = tally.dropped != droppedBefore;
  if (!isDropping && sensor.getHeard() == heardHalfway) {
    return fmt::format(
        "no scan for {:.0f} s: the device is still present but silent. Look at the sensor's power "
        "and "
        "its cable.",
        waited);
  }
  return fmt::format(
      "no good scan for {:.0f} s, though the sensor sends something: {}, and its latest answer has "
      "the status {}. Look at the cable and at the sensor's status ('tarvolink info'), or ask for "
      "fewer points (--cluster).",
      waited, isDropping ? plural(tally.dropped, "scan") + " dropped so far" : "all is damaged",
      sanitized(sensor.getLastRecord().status.substr(0, STATUS_SIZE)));
}

}  // namespace tool
