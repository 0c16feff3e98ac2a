#include "tarvolink/scip1/cSensorDriverSCIP1.h"

#include <boost/chrono.hpp>
#include <cstdio>
#include <iostream>
#include <sstream>

#include "tarvolink/scip/cSCIPError.h"
#include "tarvolink/scip1/cSCIP12Adapter.h"
#include "tarvolink/scip1/geometry.h"

namespace {

using boost::chrono::steady_clock;

// The answer that a failed exchange did not wait for begins up to 300 ms late, from a sensor that
// is slow for once. The rest is for serial adapters and busy hosts, which hold back bytes.
constexpr int SILENCE = 350;  // milliseconds

// Such an answer ends within it: 1000 steps of three characters take 1.6 s at 19200 bits/s. A line
// that is noisy for longer fails the next exchange anyway.
constexpr boost::chrono::milliseconds SILENCE_LIMIT(2500);

/// Ends the process by the assertion of an empty pointer ("px != 0"). The answer is another
/// command's, and a host that navigates by it would be worse off than one that stands still.
void endProcess() {
  const boost::shared_ptr<cScan> nothing;
  static_cast<void>(*nothing);
}

}  // namespace

cSensorDriverSCIP1::cExchangeLock::cExchangeLock(const cSensorDriverSCIP1& driver)
    : driver(driver), isOwner(driver.lineOwner != std::this_thread::get_id()) {
  if (!isOwner) return;
  driver.waitForTurn();
  driver.link->mutex.lock();  // for those who look at the link's record themselves
  driver.lineOwner = std::this_thread::get_id();
}

cSensorDriverSCIP1::cExchangeLock::~cExchangeLock() {
  if (!isOwner) return;
  driver.lineOwner = std::thread::id();
  driver.link->mutex.unlock();
  driver.endTurn();
}

// Standard C++ here: a wait on Boost's condition is an interruption point, and a caller who leaves
// by one would leave its turn behind, for which all others wait.
void cSensorDriverSCIP1::waitForTurn() const {
  std::unique_lock<std::mutex> lock(turnMutex);
  const std::uint64_t turn = nextTurn++;
  turnEnded.wait(lock, [&] { return turn == currentTurn; });
}

void cSensorDriverSCIP1::endTurn() const {
  const std::lock_guard<std::mutex> lock(turnMutex);
  ++currentTurn;
  turnEnded.notify_all();
}

cSensorDriverSCIP1::cSensorDriverSCIP1(boost::shared_ptr<cTarvoLink> link) : cSensorDriver(link) {
  scans.reset(new cLockableScanList);
  minSpot = 44;
  maxSpot = 724;
  frontSpot = SCIP1_FRONT_STEP;
  numSpot = SCIP1_STEPS_PER_TURN;
  minDist = 20;
  maxDist = 4095;
}

cSensorDriverSCIP1::~cSensorDriverSCIP1() {
  // Otherwise a worker would go on reading, for as long as the sensor goes on sending.
  link->portbuf->interruptReads(true);
  adapter.reset();
  link->portbuf->interruptReads(false);
}

// --- commands --------------------------------------------------------------------------

int cSensorDriverSCIP1::doRaw(std::string cmd) {
  const cExchangeLock lock(*this);
  if (hasFailed()) awaitSilence();
  const bool isDead = !link->portbuf->isWritable();
  const int error = link->doRaw1(cmd);
  hasMetDeadLine = isDead && hasFailed();
  if ((error & cSCIPError::ESTATUS_MASK) == 0) return 0;
  if ((error & cSCIPError::ESCIP1_STATUS) != 0) return error & ~cSCIPError::ESCIP1_STATUS;
  return -1;
}

/// Whether the line has been dead (hung up, or full) since the latest exchange began.
bool cSensorDriverSCIP1::isStillDead() const {
  return hasMetDeadLine && !link->portbuf->isWritable();
}

/// Whether the answer to the latest exchange, or the rest of it, may still come. A refusal is
/// whole.
bool cSensorDriverSCIP1::hasFailed() const {
  const int error = link->record.error;
  return !link->isComplete || error == cSCIPError::EINVALID_ECHO ||
         error == cSCIPError::EINVALID_STATUS;
}

/// Discards the answer to a failed exchange. Otherwise the next exchange would take it for its own,
/// and each one after that the answer to the one before.
void cSensorDriverSCIP1::awaitSilence() {
  kavTBX::basic_portbuf<char>& port = *link->portbuf;
  const auto deadline = steady_clock::now() + SILENCE_LIMIT;
  const int timeout = port.readTimeout;
  port.readTimeout = SILENCE;
  do {
    port.discardInput();
    // A dead port has input for ever (its end), and an interrupted one is about to be closed.
  } while (port.isWritable() && !port.isInterrupted() && steady_clock::now() < deadline &&
           port.isAvailable());
  port.readTimeout = timeout;
}

int cSensorDriverSCIP1::doVersion() {
  const cExchangeLock lock(*this);
  const int result = doRaw("V");
  if (result != 0) return result;
  std::istringstream lines(link->record.body);
  for (std::string line; std::getline(lines, line);) {
    const std::string key = line.substr(0, 4);
    const std::string value = line.substr(line.find(':') + 1);  // the whole line without one
    if (key == "VEND") vend = value;
    if (key == "PROD") prod = value;
    if (key == "FIRM") firm = value;
    if (key == "PROT") prot = value;
    if (key == "SERI") serial = value;
  }
  return 0;
}

std::string cSensorDriverSCIP1::makeScanCommand(int start, int end, int cluster) {
  char command[40];
  std::snprintf(command, sizeof command, "G%03d%03d%02d", start, end, cluster);
  return command;
}

int cSensorDriverSCIP1::doScan(int start, int end, int cluster) {
  const std::string command = makeScanCommand(start, end, cluster);
  int result = 0;
  boost::shared_ptr<cScan> scan;
  {
    const cExchangeLock lock(*this);
    result = doRaw(command);
    if (result == 0) scan = decode(start, end, cluster);
  }
  publish(scan);
  return result;
}

int cSensorDriverSCIP1::doLaser(bool on) { return doRaw(makeLaserCommand(on)); }

std::string cSensorDriverSCIP1::makeSpeedCommand(int baud) {
  char command[32];
  std::snprintf(command, sizeof command, "S%06d1234567", baud);
  return command;
}

int cSensorDriverSCIP1::doSpeed(int baud) {
  const cExchangeLock lock(*this);
  const int result = doRaw(makeSpeedCommand(baud));
  if (result != 0) {
    link->portbuf->getSetting()->baudRate = baud;
    link->portbuf->termSetup(link->portbuf->getSetting());
  }
  return result;
}

// --- scans -----------------------------------------------------------------------------

boost::shared_ptr<cScan> cSensorDriverSCIP1::addScan(int start, int end, int cluster) {
  boost::shared_ptr<cScan> scan;
  {
    const cExchangeLock lock(*this);
    scan = decode(start, end, cluster);
  }
  return publish(scan);
}

boost::shared_ptr<cScan> cSensorDriverSCIP1::decode(int start, int end, int cluster) {
  boost::shared_ptr<cScan> none;
  factory.scan.reset(new cScan(toDegrees(start) / DEGREES_PER_RADIAN,
                               toDegrees(end) / DEGREES_PER_RADIAN,
                               cluster * SCIP1_DEGREES_PER_STEP / DEGREES_PER_RADIAN));
  factory.scan->timeStamp = kavTBX::cTime(boost::posix_time::microsec_clock::local_time());
  std::istringstream lines(link->record.body);
  for (std::string line; std::getline(lines, line) && !line.empty();) {
    if (line.size() % 2 != 0) return none;
    factory.addData(decode6bit(line, 2));
  }
  const long long grouped = cluster == 0 ? 1 : cluster;
  const long long expected = (static_cast<long long>(end) - start) / grouped + 1;
  const auto points = static_cast<long long>(factory.scan->points.size());
  if (points == expected) return factory.scan;
  std::cerr << "comm error: mixed response? (ret: " << points << " expected:" << expected << ")"
            << std::endl;
  endProcess();
  return none;
}

boost::shared_ptr<cScan> cSensorDriverSCIP1::publish(boost::shared_ptr<cScan> scan) {
  if (scan) lockable::append(*scans, scan);
  return scan;
}

// --- faces -----------------------------------------------------------------------------

std::string cSensorDriverSCIP1::getStatus() const { return "Sensor works well."; }

const int& cSensorDriverSCIP1::getErr() const { return cSensorDriver::getErr(); }

std::string cSensorDriverSCIP1::getLastRawCommand() const {
  const cExchangeLock lock(*this);
  return link->lastRawCommand;
}

std::string cSensorDriverSCIP1::getResponseBody() const {
  const cExchangeLock lock(*this);
  return link->record.body;
}

iSCIP1IF* cSensorDriverSCIP1::getSCIP1IF() { return this; }

iSCIP2IF* cSensorDriverSCIP1::getSCIP2IF() {
  boost::mutex::scoped_lock lock(adapterMutex);
  std::cerr << "Creating SCIP2 Adapter\n";
  if (!adapter) {
    adapter.reset(new cSCIP12Adapter(this));
    std::cerr << "New SCIP2 Adapter created\n";
  }
  std::cerr << "New SCIP2 Adapter starting..\n";
  adapter->run();
  std::cerr << "New SCIP2 Adapter started\n";
  return adapter.get();
}
