#include "tools/cScanRun.h"

#include <fmt/format.h>

#include <algorithm>
#include <stdexcept>

#include "tools/cFailure.h"

namespace tool {

namespace {

constexpr int START_TRIES = 3;  // the library gives a slow sensor 200 ms to acknowledge
constexpr std::chrono::milliseconds WAIT{100};  // how soon a stop is noticed while no scan comes
constexpr double LEAST_PATIENCE_S = 2;
constexpr double PATIENCE_PERIODS = 3;

}  // namespace

cScanRun::cScanRun(const cSensor& sensor, const cScanRange& wanted, const cStop& ender)
    : scanner(sensor.scanner()),
      range(wanted),
      stop(ender),
      patience(std::max(LEAST_PATIENCE_S, PATIENCE_PERIODS * range.getPeriod())) {
  start();
}

cScanRun::~cScanRun() {
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
  throw cFailure(eExit::BAD_INPUT,
                 "the sensor does not start scanning (its answer, if any, is above). Look at what "
                 "'tarvolink info' says of its status, and switch it off and on.");
}

boost::shared_ptr<cScan> cScanRun::next() {
  while (!stop.isRequested()) {
    if (auto scan = nextWithin(WAIT)) return scan;
  }
  return {};
}

boost::shared_ptr<cScan> cScanRun::nextWithin(std::chrono::milliseconds timeOut) {
  auto scan = takeGood();
  if (!scan) {
    if (silence > patience) fail();
    waitABit(timeOut);
    scan = takeGood();
  }
  if (scan) silence = silence.zero();
  return scan;
}

boost::shared_ptr<cScan> cScanRun::takeGood() {
  while (auto scan = takeAny()) {
    if (scan->points.size() == range.getPoints()) return scan;
    ++dropped;
  }
  return {};
}

boost::shared_ptr<cScan> cScanRun::takeAny() {
  try {
    return scanner.getScanFirst();
  } catch (const std::out_of_range&) {
    ++dropped;
    return {};
  }
}

void cScanRun::waitABit(std::chrono::milliseconds timeOut) {
  const auto before = cClock::now();
  try {
    scanner.waitScan(static_cast<int>(timeOut.count()));
  } catch (const std::out_of_range&) {
    ++dropped;
  }
  // A process that was stopped (Ctrl-Z) has not waited for the sensor all that time.
  silence += std::min<cClock::duration>(cClock::now() - before, 2 * timeOut);
}

void cScanRun::fail() const {
  const double waited = std::chrono::duration<double>(patience).count();
  throw cFailure(
      eExit::SCANS_STOPPED,
      dropped == 0
          ? fmt::format("no scan came for {:.0f} s. Is the sensor still plugged in and powered?",
                        waited)
          : fmt::format("no good scan came for {:.0f} s; {} were dropped so far, not being as "
                        "asked for. Check the cable, or ask for fewer points (--cluster).",
                        waited, dropped));
}

}  // namespace tool
