#include "tarvoscan/scan/cSensorClock.h"

#include <algorithm>
#include <cstdlib>

namespace tarvo {

namespace {

constexpr std::int64_t CLOCK_RANGE = 1 << 24;  // milliseconds until it wraps
constexpr std::int64_t NANOSECONDS_PER_SECOND = 1000000000;

// What a clock may gain on the host's between two readings, and what a stamp may be early by.
constexpr std::int64_t TOLERANCE_MS = 1000;

}  // namespace

std::int64_t cSensorClock::add(std::uint32_t clock, std::int64_t arrival) {
  const std::int64_t passed = isStarted ? countPassed(clock, arrival) : -1;
  if (passed >= 0) {
    elapsed += passed;
  } else {
    elapsed = clock;
    window.fill({});
  }
  isStarted = true;
  lastClock = clock;
  lastArrival = arrival;
  const std::int64_t difference = arrival - elapsed * NANOSECONDS_PER_MILLISECOND;
  note(arrival, difference);
  compare(arrival, difference);
  return std::max<std::int64_t>(passed, 0);
}

/// Milliseconds since the reading before; below 0: this one does not follow from it.
///
/// A reading may arrive late, by as long as the process was stopped, so that less has passed on the
/// sensor's clock than on the host's; then the next one catches up with the offset known before.
std::int64_t cSensorClock::countPassed(std::uint32_t clock, std::int64_t arrival) const {
  const std::int64_t host = (arrival - lastArrival) / NANOSECONDS_PER_MILLISECOND;
  std::int64_t passed = (static_cast<std::int64_t>(clock) - lastClock + CLOCK_RANGE) % CLOCK_RANGE;
  if (host > passed) passed += (host - passed + TOLERANCE_MS) / CLOCK_RANGE * CLOCK_RANGE;
  const std::int64_t late =
      (arrival - getOffset()) / NANOSECONDS_PER_MILLISECOND - (elapsed + passed);
  return passed <= host + TOLERANCE_MS || std::abs(late) <= TOLERANCE_MS ? passed : -1;
}

void cSensorClock::note(std::int64_t arrival, std::int64_t difference) {
  const std::int64_t second = arrival / NANOSECONDS_PER_SECOND;
  cSecond& entry = window[static_cast<std::size_t>(second) % SECONDS];
  if (entry.second != second) entry = {second, difference, difference};
  entry.least = std::min(entry.least, difference);
  entry.most = std::max(entry.most, difference);
}

/// Looks through the seconds that are recent at `arrival`.
void cSensorClock::compare(std::int64_t arrival, std::int64_t difference) {
  const std::int64_t now = arrival / NANOSECONDS_PER_SECOND;
  std::int64_t most = difference;
  offset = difference;
  for (const cSecond& entry : window) {
    const bool isRecent =
        entry.second >= 0 && now - entry.second < static_cast<std::int64_t>(SECONDS);
    if (!isRecent) continue;
    offset = std::min(offset, entry.least);
    most = std::max(most, entry.most);
  }
  jitter = most - offset;
}

}  // namespace tarvo
