#include "tarvoscan/scanner/cScanSession.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "tarvoscan/search/cSensorFinder.h"

namespace tarvo {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds START_TIMEOUT{2000};  // an answer may be behind a record on a slow line
constexpr int START_TRIES = 3;
constexpr milliseconds ANSWER_TIMEOUT{2000};

// A sensor that is silent for longer than three of its periods has stopped; no quicker than this,
// since USB adapters and busy machines hold bytes back.
constexpr milliseconds SHORTEST_PATIENCE{500};
constexpr int PATIENCE_PERIODS = 3;
// Damage comes in bursts; a stream that stays damaged is begun anew.
constexpr milliseconds DAMAGE_PATIENCE{2000};

constexpr milliseconds SCIP1_TURN{
    100};  // what a skipped turn is, since the sensor does not report it
constexpr milliseconds SCIP1_TIMEOUT{1000};  // until an answer begins

constexpr milliseconds LOOK_PERIOD{2000};
constexpr double BITS_PER_BYTE = 10;  // on a serial line: start, eight, stop
constexpr double SLOW_SHARE = 0.95;   // of the expected rate; below, scans are missing

constexpr milliseconds DRAIN_LIMIT{200};
constexpr std::chrono::hours LONG_TIME{1};

constexpr auto QUIT = "QT";

eInformation toInformation(eCommand command) {
  return command == eCommand::FETCH_STATUS ? eInformation::STATUS : eInformation::IDENTITY;
}

}  // namespace

cScanSession::cScanSession(cScannerParts& parts, cConversation& talk, const cSensorInfo& sensor,
                           const cScanRange& range)
    : parts(parts),
      talk(talk),
      sensor(std::make_shared<cSensorInfo>(sensor)),
      range(range),
      decoder(range),
      maker(parts.options, range, this->sensor, parts.nextNumber) {}

cProblem cScanSession::run(const cProblem& first) {
  notice = first;
  parts.board.setLineRate(getLineRate());
  cProblem problem;
  while (!problem && !parts.waker.isStopRequested()) {
    problem = parts.isLaserWanted ? scan() : pause();
  }
  parts.nextNumber = maker.getNextNumber();
  const cAnswer none{problem ? eAnswer::GONE : eAnswer::STOPPED, {}, {}};
  finish(fetching, none);
  finish(switching, none);
  return problem;
}

void cScanSession::end() {
  cScanPort& port = talk.getPort();
  if (port.isGone()) return;
  const std::string command = range.isScip2 ? QUIT : cSensorDriverSCIP1::makeLaserCommand(false);
  port.send(command + cTarvoLink::SEND_EOL, DRAIN_LIMIT);
  port.drain(DRAIN_LIMIT);
}

// --- scanning --------------------------------------------------------------------------

/// Until the laser is to go off, the sensor is lost, or the end.
cProblem cScanSession::scan() {
  if (cProblem problem = startStream()) return problem;
  if (parts.waker.isStopRequested()) return {};
  parts.board.setState(eState::SCANNING, notice);
  finish(switching, {eAnswer::GOOD, {}, {}});
  lastGood = lastHeard = nextRequest = cClock::now();
  nextLook = cClock::now() + LOOK_PERIOD;
  isStreaming = range.isScip2;
  cProblem problem;
  for (serve(); !problem && !isOver(); serve()) {
    problem = range.isScip2 ? stream() : request();
    watchLine();
  }
  isStreaming = false;
  return problem;
}

bool cScanSession::isOver() const { return parts.waker.isStopRequested() || !parts.isLaserWanted; }

/// SCIP 2.0: asks for scans without end. SCIP 1.x: lights the laser.
cProblem cScanSession::startStream() {
  const std::string command =
      range.isScip2 ? range.getCommand(false) : cSensorDriverSCIP1::makeLaserCommand(true);
  cAnswer answer;
  for (int i = 0; i < START_TRIES; ++i) {
    if (i > 0 && range.isScip2) talk.ask(QUIT, ANSWER_TIMEOUT);
    answer = talk.ask(command, START_TIMEOUT);
    echo = talk.getRecord().echo;
    if (answer || answer.kind == eAnswer::STOPPED) break;
    if (answer.kind == eAnswer::GONE) return describeLoss();
  }
  const bool isStarted = answer || answer.kind == eAnswer::STOPPED;
  if (isStarted || !range.isScip2)
    return {};  // SCIP 1.x: some do not know the command; the laser is on
  finish(switching, answer);
  return {eProblem::SENSOR_REFUSES,
          fmt::format("the sensor on {} does not start scanning: {} {}.", sensor->device, command,
                      toText(answer)),
          fmt::format("Its status is \"{}\". Switch it off and on.", sensor->status)};
}

/// Receives the next record of a stream.
cProblem cScanSession::stream() {
  const bool isWhole = receive(cClock::now() + getPatience(), true);
  switch (talk.getPort().getEnd()) {
    case cScanPort::eEnd::GONE:
      return describeLoss();
    case cScanPort::eEnd::STOPPED:
      return {};
    case cScanPort::eEnd::WOKEN:
      parts.waker.takeWake();
      return {};
    default:
      judge(isWhole);
      return checkSilence();
  }
}

/// Asks for the next scan of a SCIP 1.x sensor once it is due.
cProblem cScanSession::request() {
  const auto wait = std::chrono::ceil<milliseconds>(nextRequest - cClock::now());
  if (wait > milliseconds(0)) {
    parts.waker.sleep(wait);
    parts.waker.takeWake();
    return talk.getPort().isGone() ? describeLoss() : cProblem();
  }
  nextRequest = std::max(nextRequest + getPeriod(), cClock::now());
  isOdd = !isOdd;
  echo = talk.send(range.getCommand(isOdd));
  const bool isWhole = receive(cClock::now() + SCIP1_TIMEOUT, false);
  if (talk.getPort().getEnd() == cScanPort::eEnd::GONE) return describeLoss();
  if (talk.getPort().getEnd() == cScanPort::eEnd::STOPPED) return {};
  const auto before = lastGood;
  judge(isWhole);
  if (lastGood == before) {
    if (talk.getPort().getArrival() == 0) parts.board.countLost();
    maker.skip();
    talk.expectLeftovers();
  }
  return checkSilence();
}

bool cScanSession::receive(cClock::time_point deadline, bool isWakeable) {
  const bool isWhole = talk.receive(fetching ? std::min(deadline, fetchEnd) : deadline, isWakeable);
  if (talk.getPort().getArrival() != 0) lastHeard = cClock::now();
  if (fetching && cClock::now() >= fetchEnd) finish(fetching, {});
  return isWhole;
}

/// Looks what arrived, if anything did.
void cScanSession::judge(bool isWhole) {
  if (talk.getPort().getArrival() == 0) return;
  if (isWhole && isAnswered()) return;
  if (isWhole && takeScan()) return;
  parts.board.countDamaged();
  lastStatus = talk.getRecord().status.substr(0, range.isScip2 ? 2 : 1);
}

/// Whether the latest record answers a command: the one that is awaited, or one that nobody awaits
/// any more. A scan's echo has its range where theirs have the host string.
bool cScanSession::isAnswered() {
  const std::string& heard = talk.getRecord().echo;
  if (!fetching || heard != fetchEcho) return range.isScip2 && heard.size() > 2 && heard[2] == ';';
  cAnswer answer = talk.readAnswer();
  if (answer && !learn(toInformation(fetching->kind), answer)) answer.kind = eAnswer::DAMAGED;
  finish(fetching, answer);
  return true;
}

/// Keeps what the sensor reported.
bool cScanSession::learn(eInformation kind, const cAnswer& answer) {
  cSensorInfo news = *sensor;
  if (!readInformation(kind, talk.isScip2(), answer.body, news)) return false;
  sensor = std::make_shared<cSensorInfo>(news);
  maker.setSensor(sensor);
  parts.board.setSensor(sensor);
  return true;
}

bool cScanSession::takeScan() {
  std::vector<int> distances;
  std::optional<std::uint32_t> clock;
  if (!decoder.take(talk.getRecord(), echo, distances, clock)) return false;
  const auto scan = maker.make(std::move(distances), clock, talk.getPort().getArrival());
  lastGood = cClock::now();
  parts.board.countDelivered(*scan, maker);
  if (parts.hub.publish(scan) != 0) parts.board.setDropped(parts.hub.getDropped());
  return true;
}

// --- losing it -------------------------------------------------------------------------

/// Whether no good scan has come for too long.
cProblem cScanSession::checkSilence() {
  const auto now = cClock::now();
  const bool isSilent = now - lastHeard >= getPatience();
  const bool isDamaged = now - lastGood >= std::max(getPatience(), DAMAGE_PATIENCE);
  return isSilent || isDamaged ? describeLoss() : cProblem();
}

cProblem cScanSession::describeLoss() const {
  const std::string& device = sensor->device;
  if (talk.getPort().isGone()) {
    return {eProblem::DEVICE_GONE,
            fmt::format("{} has gone: it was unplugged, or its power went.", device),
            "Look at its plug."};
  }
  if (cClock::now() - lastHeard >= getPatience()) {
    return {eProblem::SENSOR_SILENT,
            fmt::format(
                "the sensor on {} has stopped sending: nothing came for {} ms, though its device "
                "is present.",
                device, getPatience().count()),
            "Look at its power and its cable."};
  }
  const std::string wanted = range.isScip2 ? "99" : "0";
  if (!lastStatus.empty() && lastStatus != wanted) {
    return {eProblem::SENSOR_REFUSES,
            fmt::format(
                "the sensor on {} sends no scans: its latest record has the status {}, where {} is "
                "normal.",
                device, printable(lastStatus), wanted),
            "Statuses from 50 on are trouble in the sensor: ask for repair. Otherwise switch it "
            "off and on."};
  }
  return {eProblem::SCANS_DAMAGED,
          fmt::format("all that the sensor on {} sends is damaged.", device),
          "Look at the plugs, take a shorter cable, and see that no other program reads the port."};
}

milliseconds cScanSession::getPatience() const {
  const double rate = std::min(maker.getExpectedRate() > 0 ? maker.getExpectedRate() : 10.0,
                               std::max(getLineRate(), 0.1));
  const auto periods = milliseconds(static_cast<int>(1000 * PATIENCE_PERIODS / rate));
  return std::max(SHORTEST_PATIENCE, range.isScip2 ? periods : periods + SCIP1_TIMEOUT);
}

milliseconds cScanSession::getPeriod() const {
  return range.skippedTurns == 0 ? milliseconds(0) : SCIP1_TURN * (range.skippedTurns + 1);
}

// --- how the line does -----------------------------------------------------------------

double cScanSession::getLineRate() const {
  constexpr std::size_t ECHO_SIZE = 20;  // command and host string
  return sensor->lineSpeed / BITS_PER_BYTE /
         static_cast<double>(cScanRecord::getSize(range, ECHO_SIZE));
}

/// Says so when fewer scans come than the sensor makes because the line cannot carry them.
void cScanSession::watchLine() {
  if (cClock::now() < nextLook) return;
  nextLook = cClock::now() + LOOK_PERIOD;
  const cHealth health = parts.board.get();
  // Damaged scans are the line's, too, but not its speed's.
  const bool isDamaged = std::exchange(damagedBefore, health.damaged) != health.damaged;
  const bool isSlow = !isDamaged && health.expectedRate > 0 &&
                      health.rate < SLOW_SHARE * health.expectedRate &&
                      health.lineRate < health.expectedRate;
  if (!isSlow) return parts.board.setState(eState::SCANNING, notice);
  parts.board.setState(eState::SCANNING,
                       {eProblem::LINE_TOO_SLOW,
                        fmt::format("{} bits/s carry {:.1f} of {:.0f} scans a second.",
                                    sensor->lineSpeed, health.lineRate, health.expectedRate),
                        "Raise the line speed, or ask for fewer points."});
}

// --- the host's commands ---------------------------------------------------------------

cProblem cScanSession::pause() {
  const char* const command = range.isScip2 ? QUIT : cSensorDriverSCIP1::makeLaserCommand(false);
  const cAnswer answer = talk.ask(command, ANSWER_TIMEOUT, START_TRIES);
  const cProblem doubt{
      eProblem::SENSOR_REFUSES,
      fmt::format("the sensor on {} does not confirm that its laser is off: {} {}.", sensor->device,
                  command, toText(answer)),
      "Try again, or take its power away."};
  parts.board.setState(eState::PAUSED, answer ? notice : doubt);
  finish(switching, answer);
  for (serve(); !parts.waker.isStopRequested() && !parts.isLaserWanted; serve()) {
    talk.receive(cClock::now() + LONG_TIME, true);
    if (talk.getPort().getEnd() == cScanPort::eEnd::GONE) return describeLoss();
    if (talk.getPort().getEnd() == cScanPort::eEnd::WOKEN) parts.waker.takeWake();
  }
  return {};
}

/// Begins with the commands that wait; in a stream one at a time.
void cScanSession::serve() {
  while (!fetching && !switching) {
    const auto command = parts.commands.take();
    if (!command) return;
    const bool isLaser =
        command->kind == eCommand::LASER_ON || command->kind == eCommand::LASER_OFF;
    isLaser ? serveLaser(command) : serveFetch(command);
  }
}

void cScanSession::serveFetch(const std::shared_ptr<cCommand>& command) {
  const eInformation kind = toInformation(command->kind);
  fetching = command;
  if (isStreaming) {
    fetchEcho = talk.send(commandFor(kind, true));
    fetchEnd = cClock::now() + ANSWER_TIMEOUT;
    return;
  }
  if (kind == eInformation::STATUS && !range.isScip2)
    return finish(fetching, {eAnswer::GOOD, {}, {}});
  cAnswer answer = talk.ask(commandFor(kind, range.isScip2), ANSWER_TIMEOUT);
  if (answer && !learn(kind, answer)) answer.kind = eAnswer::DAMAGED;
  finish(fetching, answer);
}

/// The loops see the wish, and finish the command when the sensor has answered.
void cScanSession::serveLaser(const std::shared_ptr<cCommand>& command) {
  const bool isWanted = command->kind == eCommand::LASER_ON;
  switching = command;
  if (parts.isLaserWanted == isWanted) return finish(switching, {eAnswer::GOOD, {}, {}});
  parts.isLaserWanted = isWanted;
}

/// Ends `command`, if there is one.
void cScanSession::finish(std::shared_ptr<cCommand>& command, const cAnswer& answer) {
  if (!command) return;
  if (!answer) parts.board.countFailedCommand();
  command->finish({answer ? "" : fmt::format("the command {}", toText(answer)), sensor});
  command = nullptr;
}

}  // namespace tarvo
