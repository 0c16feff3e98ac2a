#include "tarvoscan/scanner/cScannerThread.h"

#include <fmt/format.h>

#include <algorithm>
#include <boost/make_shared.hpp>

#include "tarvoscan/port/openPort.h"
#include "tarvoscan/scan/resolveRange.h"
#include "tarvoscan/search/cLineDiagnosis.h"

namespace tarvo {

namespace {

using std::chrono::milliseconds;

// Between two attempts. A plugged-in device shall be seen at once, and looking for it costs
// nothing; what a person has to change first is looked at less often.
constexpr milliseconds SHORT_WAIT{50};
constexpr milliseconds LONG_WAIT{1000};

constexpr milliseconds SPEED_TIMEOUT{1000};
// A sensor changes its line speed once its answer has left.
constexpr milliseconds SPEED_PAUSE{30};

milliseconds waitFor(eProblem kind) {
  switch (kind) {
    case eProblem::DEVICE_IN_USE:
    case eProblem::DEVICE_UNUSABLE:
    case eProblem::WRONG_SENSOR:
    case eProblem::RANGE_IMPOSSIBLE:
    case eProblem::NO_THREAD:
      return LONG_WAIT;
    default:
      return SHORT_WAIT;
  }
}

void addOnce(std::vector<int>& speeds, int speed) {
  if (speed != 0 && std::find(speeds.begin(), speeds.end(), speed) == speeds.end()) {
    speeds.push_back(speed);
  }
}

std::vector<std::string> devicesOf(const cScannerOptions& options) {
  std::vector<std::string> devices{options.device};
  if (options.serial.empty()) return devices;
  devices.insert(devices.end(), options.otherDevices.begin(), options.otherDevices.end());
  return devices;
}

/// "the serial number S1", or what else tells a sensor from another.
std::string nameOf(const cSensorInfo& sensor) {
  if (!sensor.serial.empty()) return "the serial number " + printable(sensor.serial);
  return sensor.product.empty() ? "no serial number"
                                : "no serial number, and is a " + printable(sensor.product);
}

}  // namespace

cScannerThread::cScannerThread(cScannerParts& parts)
    : parts(parts), devices(devicesOf(parts.options)) {}

void cScannerThread::run() {
  cProblem problem;
  while (!parts.waker.isStopRequested()) {
    problem = connect();
    if (parts.waker.isStopRequested() || !parts.options.comesBack) break;
    wait(problem);
  }
  close();
  parts.commands.refuseAll("the scanner has stopped");
  parts.hub.setOpen(false);
  parts.board.setState(eState::STOPPED, parts.waker.isStopRequested() ? cProblem() : problem);
}

void cScannerThread::wait(const cProblem& problem) {
  // That it does not answer yet says less than why it was lost.
  const cHealth health = parts.board.get();
  const bool isKnown = problem.kind == eProblem::NO_SENSOR && lastSensor && health.problem &&
                       health.state == eState::WAITING;
  if (!isKnown) parts.board.setState(eState::WAITING, problem);
  parts.commands.refuseAll("the sensor was lost: " + problem.message);
  parts.waker.sleep(waitFor(problem.kind));
  parts.waker.takeWake();
}

std::vector<int> cScannerThread::getSpeeds() const {
  std::vector<int> speeds = lastSpeeds;
  if (parts.options.lineSpeed != 0) {
    addOnce(speeds, parts.options.lineSpeed);
    return speeds;
  }
  for (const int speed : usualSpeeds()) addOnce(speeds, speed);
  return speeds;
}

// --- from a path to scans --------------------------------------------------------------

/// Tries each device once; the problem of the one that got farthest, which is the last to be
/// scanned, or the first.
cProblem cScannerThread::connect() {
  cProblem first;
  for (const std::string& device : devices) {
    const bool wasFound = lastSensor != nullptr;
    cProblem problem = connectTo(device);
    if (parts.waker.isStopRequested()) return {};
    if (devices.size() > 1) close();
    if (!first || problem.kind == eProblem::WRONG_SENSOR || (lastSensor && !wasFound))
      first = problem;
  }
  return first;
}

/// Finds the sensor on `device` and scans until it is lost.
cProblem cScannerThread::connectTo(const std::string& device) {
  if (port && (port->isGone() || port->isMoved())) close();
  if (!port) {
    if (cProblem problem = openDevice(device)) return problem;
  }
  if (!find()) {
    const auto heard = classifyAll(port->getCapture());
    if (!port->isGone()) return describeSilence(device, heard);
    close();
    return {eProblem::DEVICE_GONE,
            fmt::format("{} has gone while a sensor was looked for on it.", device),
            "Look at its plug and its power."};
  }
  looks = 0;
  parts.board.setState(eState::SEARCHING);
  cSensorInfo sensor;
  cProblem problem = takeOver(sensor);
  if (problem.kind == eProblem::WRONG_SENSOR || port->isGone()) close();
  return problem;
}

cProblem cScannerThread::openDevice(const std::string& device) {
  cProblem problem;
  cDescriptor terminal = openPort(device, problem);
  if (problem) return problem;
  port =
      boost::make_shared<cScanPort>(std::move(terminal), device, getSpeeds().front(), parts.waker);
  if (!port->isUsable()) {
    close();
    return describeError(device, EIO);
  }
  port->setTap(parts.options.onLine);
  talk = std::make_unique<cConversation>(port);
  finder = std::make_unique<cSensorFinder>(*talk);
  hasSearched = false;
  return {};
}

/// The first time on a port a whole search. Later, and for a sensor that is known, a look at its
/// latest speed and one at another, in turn.
bool cScannerThread::find() {
  const std::vector<int> speeds = getSpeeds();
  if (!lastSensor && !hasSearched) {
    if (parts.board.getState() != eState::WAITING) parts.board.setState(eState::SEARCHING);
    hasSearched = true;
    port->startCapture();
    const bool isFound = finder->search(speeds);
    port->stopCapture();
    return isFound;
  }
  const int round = static_cast<int>(looks % cSensorFinder::ROUNDS);
  if (finder->look(speeds.front(), round)) return true;
  const std::size_t others = speeds.size() - 1;
  if (others == 0 || parts.waker.isStopRequested() || port->isGone()) return ++looks == 0;
  const int other = speeds[1 + looks++ % others];
  if (!finder->look(other, round)) return false;
  // A sensor on USB answers at any speed: it may just have come back.
  return finder->look(speeds.front(), round) || finder->look(other, round);
}

/// Scans with the sensor that was found until it is lost.
cProblem cScannerThread::takeOver(cSensorInfo& sensor) {
  cProblem problem;
  if (!finder->identify(sensor, problem)) return problem;
  if ((problem = checkSerial(sensor))) return problem;
  cProblem notice = compareWithLast(sensor);
  const int foundSpeed = sensor.lineSpeed;
  if (const cProblem failure = raiseSpeed(sensor, *finder)) notice = failure;
  cScanRange range;
  if (!resolveRange(parts.options, sensor, range, problem)) return problem;
  parts.board.setSensor(std::make_shared<cSensorInfo>(sensor));
  if (lastSensor) parts.board.countReconnect();
  lastSensor = std::make_shared<cSensorInfo>(sensor);
  lastSpeeds = {sensor.lineSpeed};
  addOnce(lastSpeeds, foundSpeed);
  cScanSession session(parts, *talk, sensor, range);
  problem = session.run(notice);
  session.end();
  return problem;
}

cProblem cScannerThread::checkSerial(const cSensorInfo& sensor) const {
  const std::string& wanted = parts.options.serial;
  if (wanted.empty() || sensor.serial == wanted) return {};
  return {eProblem::WRONG_SENSOR,
          fmt::format("the sensor on {} has {}, not {}.", sensor.device, nameOf(sensor), wanted),
          "Plug in the right one, or change the serial number that is asked for."};
}

cProblem cScannerThread::compareWithLast(const cSensorInfo& sensor) const {
  if (!lastSensor) return {};
  if (lastSensor->serial == sensor.serial && lastSensor->product == sensor.product) return {};
  if (lastSensor->serial == sensor.serial) {
    return {eProblem::OTHER_SENSOR,
            fmt::format("another sensor is on {} now: a {}, the one before was a {}.",
                        sensor.device, printable(sensor.product), printable(lastSensor->product)),
            ""};
  }
  return {eProblem::OTHER_SENSOR,
          fmt::format("another sensor is on {} now: it has {}, the one before had {}.",
                      sensor.device, nameOf(sensor), nameOf(*lastSensor)),
          ""};
}

/// Raises the line speed where that is asked for; the sensor must then answer at it.
cProblem cScannerThread::raiseSpeed(cSensorInfo& sensor, cSensorFinder& looker) {
  const int wanted = parts.options.raisedSpeed;
  if (wanted == 0 || wanted == sensor.lineSpeed) return {};
  const std::string command = talk->isScip2() ? fmt::format("SS{:06d}", wanted)
                                              : cSensorDriverSCIP1::makeSpeedCommand(wanted);
  const cAnswer answer = talk->ask(command, SPEED_TIMEOUT);
  if (answer) {
    parts.waker.sleep(SPEED_PAUSE);
    const eDialect dialect = sensor.dialect;
    for (int round = 0; round < cSensorFinder::ROUNDS; ++round) {
      if (!looker.look(wanted, round)) continue;
      talk->setScip2(dialect != eDialect::SCIP1);
      sensor.lineSpeed = wanted;
      return {};
    }
    looker.look(sensor.lineSpeed, 0);
    talk->setScip2(dialect != eDialect::SCIP1);
  }
  return {
      eProblem::SPEED_NOT_RAISED,
      fmt::format("the line stays at {} bits/s: the sensor's change to {} {}.", sensor.lineSpeed,
                  wanted, answer ? "was accepted, but it does not answer there" : toText(answer)),
      "A sensor on its own USB port has no line speed to raise."};
}

void cScannerThread::close() {
  finder.reset();
  talk.reset();
  port.reset();
}

}  // namespace tarvo
