#include "tools/cScanRange.h"

#include <fmt/format.h>

#include <algorithm>

#include "tools/cFailure.h"

namespace tool {

namespace {

constexpr int MAX_STEP = 9999;        // a command carries four digits
constexpr int MAX_CLUSTER = 99;       // two
constexpr int MAX_INTERVAL = 9;       // one
constexpr double MAX_SECONDS = 1e9;   // 31 years: what timers take
constexpr int MAX_SHORT_FORM = 4095;  // up to here distances come in two characters, else in three

// Lines of data hold 64 characters. So many readings of three end in a line of a single one, which
// no sum check accepts.
constexpr std::size_t READINGS_A_TURN = 64;
constexpr std::size_t UNREADABLE = 43;

constexpr int WIDE_FORM = 4;  // the protocol number of three characters a distance in SCIP 1.x

void requireWithin(const char* name, int value, int lowest, int highest) {
  if (value >= lowest && value <= highest) return;
  throw cFailure(eExit::BAD_INPUT,
                 fmt::format("{} {} is not possible: give a number from {} to {}.", name, value,
                             lowest, highest));
}

}  // namespace

void cScanOptions::check() const {
  if (first) requireWithin("--first", *first, 0, MAX_STEP);
  if (last) requireWithin("--last", *last, 0, MAX_STEP);
  requireWithin("--cluster", cluster, 0, MAX_CLUSTER);
  requireWithin("--interval", interval, 0, MAX_INTERVAL);
  if (maxDistance && *maxDistance <= 0) {
    throw cFailure(
        eExit::BAD_INPUT,
        fmt::format("--max-distance {} is not possible: give millimetres above 0.", *maxDistance));
  }
  if (seconds && (*seconds <= 0 || *seconds > MAX_SECONDS)) {
    throw cFailure(eExit::BAD_INPUT,
                   fmt::format("--duration {} is not possible: give seconds above 0, up to {:.0f}.",
                               *seconds, MAX_SECONDS));
  }
  if (first && last && *first > *last) {
    throw cFailure(eExit::BAD_INPUT, fmt::format("--first {} lies behind --last {}: steps run "
                                                 "anti-clockwise, so give the smaller one first.",
                                                 *first, *last));
  }
}

cScanRange::cScanRange(const cScanOptions& options, const cSensor& sensor)
    : isOld(sensor.isOld()),
      first(options.first.value_or(sensor.info().getMinSpot())),
      last(options.last.value_or(sensor.info().getMaxSpot())),
      cluster(
          std::max(options.cluster, 1)),  // 0 and 1 ask for the same; 0 would make every angle one
      interval(options.interval),
      minDistance(sensor.info().getMinDist()),
      maxDistance(options.maxDistance.value_or(sensor.info().getMaxDist())),
      turnsPerMinute(sensor.info().getScanSpeed()) {
  checkForm(sensor);
  checkSteps(sensor.info());
  checkLastLine();
}

void cScanRange::checkForm(const cSensor& sensor) const {
  const std::string form = cSensorDriverManager::protoId[WIDE_FORM];
  if (!isOld || sensor.info().getProt().rfind(form, 0) != 0) return;
  throw cFailure(
      eExit::BAD_INPUT,
      fmt::format("the sensor's protocol is {}: scans with distances of three characters "
                  "in SCIP 1.x cannot be taken apart here. 'tarvolink info' works; for "
                  "scans use a sensor of another protocol.",
                  form));
}

void cScanRange::checkSteps(const cSensorDriver& sensor) const {
  const int lowest = sensor.getMinSpot();
  const int highest = sensor.getMaxSpot();
  if (sensor.getNumSpot() <= 0 || highest <= lowest || maxDistance <= 0) {
    throw cTransientError(
        eExit::BAD_INPUT,
        "the sensor answers, but not when it is asked for its parameters (PP), and "
        "without them its scans have no angles. Switch it off and on and try again.");
  }
  requireWithin("--first", first, lowest, highest);
  requireWithin("--last", last, first, highest);
}

void cScanRange::checkLastLine() const {
  if (isOld || maxDistance <= MAX_SHORT_FORM || getPoints() % READINGS_A_TURN != UNREADABLE) return;
  throw cFailure(eExit::BAD_INPUT,
                 fmt::format("{} readings of up to {} mm cannot be received: the last line of such "
                             "a scan is too short to be checked. Ask for one step more or fewer "
                             "(--first, --last), or for --max-distance {} or less.",
                             getPoints(), maxDistance, MAX_SHORT_FORM));
}

std::size_t cScanRange::getPoints() const {
  return static_cast<std::size_t>((last - first) / cluster) + 1;
}

int cScanRange::start(iSCIP2IF& scanner) const {
  constexpr int ENDLESS = 0;
  const int pause = isOld ? getTenths() : interval;
  return scanner.startScan(first, last, cluster, pause, ENDLESS, maxDistance);
}

bool cScanRange::isValid(double distance) const {
  return distance >= minDistance && distance <= maxDistance;
}

cScan cScanRange::readingsOf(const cScan& scan) const {
  cScan readings = scan;
  auto& points = readings.points;
  const auto isInvalid = [this](const cScanPoint& point) { return !isValid(point.distance); };
  points.erase(std::remove_if(points.begin(), points.end(), isInvalid), points.end());
  return readings;
}

/// What a SCIP 1.x sensor is to be asked at, in tenths of a second: it makes one turn in that time,
/// and an answer carries the turn under way. 0: as fast as it answers.
int cScanRange::getTenths() const { return interval == 0 ? 0 : interval + 1; }

double cScanRange::getPeriod() const {
  if (isOld) return getTenths() / 10.0;
  return turnsPerMinute > 0 ? 60.0 / turnsPerMinute * (interval + 1) : 0;
}

}  // namespace tool
