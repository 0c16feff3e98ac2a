#include "tarvoscan/scan/cScanMaker.h"

#include <time.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "tarvoscan/port/cScanPort.h"

namespace tarvo {

namespace {

constexpr double FULL_TURN = 6.283185307179586;  // radians
constexpr double NANOSECONDS = 1e9;
constexpr double MILLISECONDS = 1e3;
constexpr float METRES = 0.001F;  // in a millimetre
constexpr int TWO_CHARACTERS_MAX = 4095;

// A motor turns as fast as it should within some percent; a tenth of each difference is learnt.
constexpr double LEARNT = 0.1;
constexpr double TOLERANCE = 0.25;

/// In the form of two characters a distance beyond 4095 mm is reported as just that: it is no wall
/// there.
int farthestOf(const cScanRange& range, const cSensorInfo& sensor) {
  const int farthest = std::min(range.maxDistance, sensor.maxDistance);
  const bool isCapped = range.width == 2 && sensor.maxDistance > TWO_CHARACTERS_MAX;
  return isCapped ? std::min(farthest, TWO_CHARACTERS_MAX - 1) : farthest;
}

}  // namespace

std::int64_t getUtcOffset() {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  return now.tv_sec * std::int64_t{1000000000} + now.tv_nsec - monotonicNow();
}

cScanMaker::cScanMaker(const cScannerOptions& options, const cScanRange& range,
                       std::shared_ptr<const cSensorInfo> sensor, std::uint64_t firstNumber)
    : options(options),
      range(range),
      sensor(sensor),
      nearest(sensor->minDistance),
      farthest(farthestOf(range, *sensor)),
      angleIncrement(range.cluster * FULL_TURN / sensor->stepsPerTurn),
      turn(sensor->turnsPerMinute > 0 ? 60.0 / sensor->turnsPerMinute : 0),
      number(firstNumber) {}

std::shared_ptr<cLaserScan> cScanMaker::make(std::vector<int> distances,
                                             std::optional<std::uint32_t> sensorClock,
                                             std::int64_t arrival) {
  auto scan = std::make_shared<cLaserScan>();
  if (sensorClock) followTurns(clock.add(*sensorClock, arrival));
  scan->number = number++;
  scan->sensorClock = sensorClock;
  stamp(*scan, arrival);
  const double firstAngle =
      (range.firstStep - sensor->frontStep) * FULL_TURN / sensor->stepsPerTurn;
  scan->angleMin = firstAngle;
  scan->angleMax = firstAngle + static_cast<double>(distances.size() - 1) * angleIncrement;
  scan->angleIncrement = angleIncrement;
  scan->timeIncrement = turn * range.cluster / sensor->stepsPerTurn;
  scan->scanTime = turn * (range.skippedTurns + 1);
  scan->rangeMin = nearest / MILLISECONDS;
  scan->rangeMax = farthest / MILLISECONDS;
  scan->ranges.resize(distances.size());
  std::transform(distances.begin(), distances.end(), scan->ranges.begin(),
                 [this](int distance) { return toRange(distance); });
  scan->distances = std::move(distances);
  scan->sensor = sensor;
  return scan;
}

void cScanMaker::skip() { ++number; }

/// Counts the turns that have passed since the scan before, and learns how long one takes.
void cScanMaker::followTurns(std::int64_t passedMilliseconds) {
  missing = 0;
  if (passedMilliseconds <= 0) return;
  const double passed = static_cast<double>(passedMilliseconds) / MILLISECONDS;
  const int expected = range.skippedTurns + 1;
  // A sensor that turns faster than it reported, or did not report: each scan is the next one.
  if (turn <= 0 || passed < (1 - TOLERANCE) * expected * turn) turn = passed / expected;
  const auto turns = std::max<std::int64_t>(std::llround(passed / turn), 1);
  const double measured = passed / static_cast<double>(turns);
  if (std::abs(measured - turn) < TOLERANCE * turn) turn += LEARNT * (measured - turn);
  number += static_cast<std::uint64_t>(turns - 1);
  missing = static_cast<std::uint64_t>(std::max<std::int64_t>(turns / expected - 1, 0));
}

/// The sensor's clock is read at the end of the turn; the first ray came before by the part of the
/// turn from the first step on.
void cScanMaker::stamp(cLaserScan& scan, std::int64_t arrival) const {
  const double before = turn * (1 - static_cast<double>(range.firstStep) / sensor->stepsPerTurn);
  const std::int64_t measured =
      scan.sensorClock ? clock.getStamp() - std::llround(before * NANOSECONDS) : arrival;
  const std::int64_t utcOffset = getUtcOffset();
  scan.arrivalMonotonic = arrival;
  scan.arrivalUtc = arrival + utcOffset;
  scan.stampMonotonic = measured;
  scan.stampUtc = measured + utcOffset;
}

float cScanMaker::toRange(int distance) const {
  if (distance < nearest) return toRangeOfCode(distance);
  if (distance > farthest) return std::numeric_limits<float>::infinity();
  return static_cast<float>(distance) * METRES;
}

float cScanMaker::toRangeOfCode(int code) const {
  const auto means = [code](const std::vector<int>& codes) {
    return std::find(codes.begin(), codes.end(), code) != codes.end();
  };
  if (means(options.farCodes)) return std::numeric_limits<float>::infinity();
  if (means(options.nearCodes)) return -std::numeric_limits<float>::infinity();
  return std::numeric_limits<float>::quiet_NaN();
}

}  // namespace tarvo
