#include "tarvoscan/scanner/cHealthBoard.h"

#include <algorithm>
#include <cstdlib>

#include "tarvoscan/port/cScanPort.h"

namespace tarvo {

namespace {

constexpr std::int64_t RATE_WINDOW = 2000000000;  // nanoseconds
constexpr std::int64_t CLOCK_STEP = 10000000;     // less is the clock's being adjusted, not set
constexpr double NANOSECONDS = 1e9;

}  // namespace

cHealth cHealthBoard::get() const {
  const std::lock_guard<std::mutex> lock(mutex);
  cHealth now = health;
  const std::int64_t moment = monotonicNow();
  now.rate = getRate(moment);
  if (lastArrival != 0) now.scanAge = static_cast<double>(moment - lastArrival) / NANOSECONDS;
  return now;
}

eState cHealthBoard::getState() const {
  const std::lock_guard<std::mutex> lock(mutex);
  return health.state;
}

double cHealthBoard::getRate(std::int64_t now) const {
  if (arrivals.size() < 2 || now - arrivals.back() > RATE_WINDOW) return 0;
  const auto span = static_cast<double>(arrivals.back() - arrivals.front()) / NANOSECONDS;
  return span > 0 ? static_cast<double>(arrivals.size() - 1) / span : 0;
}

void cHealthBoard::setState(eState state, const cProblem& problem) {
  {
    const std::lock_guard<std::mutex> lock(mutex);
    const bool isNew = health.state != state || health.problem.kind != problem.kind ||
                       health.problem.message != problem.message;
    if (!isNew) return;
    if (state != eState::SCANNING) arrivals.clear();
    health.state = state;
    health.problem = problem;
  }
  if (!onChange) return;
  try {
    onChange(get());
  } catch (...) {
    // The host's own; one that left the thread would end the process.
  }
}

void cHealthBoard::setSensor(std::shared_ptr<const cSensorInfo> sensor) {
  const std::lock_guard<std::mutex> lock(mutex);
  health.sensor = std::move(sensor);
}

void cHealthBoard::countReconnect() {
  const std::lock_guard<std::mutex> lock(mutex);
  ++health.reconnects;
}

void cHealthBoard::countDelivered(const cLaserScan& scan, const cScanMaker& maker) {
  const std::lock_guard<std::mutex> lock(mutex);
  const std::int64_t offset = scan.arrivalUtc - scan.arrivalMonotonic;
  if (lastArrival != 0 && std::abs(offset - utcOffset) >= CLOCK_STEP) ++health.clockSteps;
  utcOffset = offset;
  ++health.delivered;
  health.lost += maker.getMissing() - std::min(maker.getMissing(), damagedInARow);
  damagedInARow = 0;
  lastArrival = scan.arrivalMonotonic;
  arrivals.push_back(lastArrival);
  while (lastArrival - arrivals.front() > RATE_WINDOW) arrivals.pop_front();
  health.expectedRate = maker.getExpectedRate();
  health.clockOffset = static_cast<double>(maker.getClock().getOffset()) / NANOSECONDS;
  health.clockJitter = static_cast<double>(maker.getClock().getJitter()) / NANOSECONDS;
}

void cHealthBoard::countDamaged() {
  const std::lock_guard<std::mutex> lock(mutex);
  ++health.damaged;
  ++damagedInARow;
}

void cHealthBoard::countLost() {
  const std::lock_guard<std::mutex> lock(mutex);
  ++health.lost;
}

void cHealthBoard::setLineRate(double scansPerSecond) {
  const std::lock_guard<std::mutex> lock(mutex);
  health.lineRate = scansPerSecond;
}

void cHealthBoard::countFailedCommand() {
  const std::lock_guard<std::mutex> lock(mutex);
  ++health.failedCommands;
}

void cHealthBoard::setDropped(std::uint64_t count) {
  const std::lock_guard<std::mutex> lock(mutex);
  health.dropped = count;
}

void cHealthBoard::reset() {
  const std::lock_guard<std::mutex> lock(mutex);
  health.problem = {};
  health.sensor = nullptr;
  arrivals.clear();
  damagedInARow = 0;
}

}  // namespace tarvo
