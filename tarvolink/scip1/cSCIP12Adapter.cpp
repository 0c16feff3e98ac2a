#include "tarvolink/scip1/cSCIP12Adapter.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "tarvolink/scip1/cSensorDriverSCIP1.h"

namespace {

namespace pt = boost::posix_time;
using boost::chrono::steady_clock;

// States of the worker.
constexpr int NO_DRIVER = 1;
constexpr int SCANNING = 2;
constexpr int IDLE = 3;
constexpr int EXITING = 4;

// Requests to the worker.
constexpr int LASER_ON = 0;
constexpr int LASER_OFF = 1;
constexpr int GO_IDLE = 2;
constexpr int GO_SCANNING = 3;
constexpr int SET_SPEED = 4;
constexpr int EXIT = 5;

constexpr int ENDLESS = -1;

// A hung-up port fails at once, and a counted scan without a period would spin on it.
const pt::time_duration RETRY_PAUSE = pt::milliseconds(100);

pt::time_duration elapsedSince(steady_clock::time_point begin) {
  return pt::microseconds(
      boost::chrono::duration_cast<boost::chrono::microseconds>(steady_clock::now() - begin)
          .count());
}

}  // namespace

cSCIP12Adapter::cSCIP12Adapter(cSensorDriverSCIP1* driver)
    : driver(driver), start(driver->getMinSpot()), end(driver->getMaxSpot()) {
  beginSchedule();
}

cSCIP12Adapter::~cSCIP12Adapter() { finalize(); }

// --- callers: scanning -----------------------------------------------------------------

int cSCIP12Adapter::startScan(int st, int ed, int sk, int ssk, int count, int mx) {
  if (getState() != IDLE) return 0;
  const int scans = count == 0 ? ENDLESS : count;
  const double seconds = ssk * 0.1;
  std::fprintf(stderr, "Starting scan st:%d ed:%d sk:%d ssk:%d s#:%d mx:%d\n", st, ed, sk, ssk,
               scans, mx);
  std::fprintf(stderr, "resetting interval :%f[ms] (from %d scan)\n", seconds, ssk);
  boost::mutex::scoped_lock requests(queue.mutex);
  boost::mutex::scoped_lock lock(wakeMutex);
  // Asked again: no lock is held while standard error, which may block, is written to, and another
  // start may have come first.
  if (state != IDLE) return 0;
  interval = seconds;
  beginSchedule();
  setRange(st, ed, sk, scans);
  askForScanning();
  return 1;
}

int cSCIP12Adapter::getStoredScan(int st, int ed, int sk, int) {
  boost::mutex::scoped_lock requests(queue.mutex);
  boost::mutex::scoped_lock lock(wakeMutex);
  if (state != IDLE) return -1;
  setRange(st, ed, sk, 1);
  askForScanning();
  return 0;
}

/// The caller has held the queue's mutex since it looked at, or set, what is to be scanned.
/// Otherwise a count that ended or a stop in between would be undone, and scanning begun without
/// end.
void cSCIP12Adapter::askForScanning() {
  queue.queue.push_back({GO_SCANNING, 0});
  queue.cond.notify_all();
}

void cSCIP12Adapter::setRange(int st, int ed, int sk, int scans) {
  ++generation;
  start = st;
  end = ed;
  cluster = sk;
  scansLeft = scans;
}

int cSCIP12Adapter::stopAll() {
  boost::mutex::scoped_lock requests(queue.mutex);
  forgetStarts();
  setState(IDLE);
  return 0;
}

/// Withdraws starts that the worker has not begun. Under the queue's mutex.
void cSCIP12Adapter::forgetStarts() {
  const auto isStart = [](const reqPacket& request) { return request.code == GO_SCANNING; };
  queue.queue.erase(std::remove_if(queue.queue.begin(), queue.queue.end(), isStart),
                    queue.queue.end());
}

int cSCIP12Adapter::abortScan() {
  boost::mutex::scoped_lock requests(queue.mutex);
  if (isScanning()) askForScanning();
  return 0;
}

int cSCIP12Adapter::resumeScan() {
  boost::mutex::scoped_lock requests(queue.mutex);
  boost::mutex::scoped_lock lock(wakeMutex);
  if (scansLeft < 0) return -1;
  askForScanning();
  return 0;
}

int cSCIP12Adapter::setCommSpeed(int baud) {
  if (getState() != IDLE) return 0;
  queue.post({SET_SPEED, baud});
  return 1;
}

int cSCIP12Adapter::startStoringScan() {
  queue.post({LASER_ON, 0});
  return 0;
}

int cSCIP12Adapter::scansToGo() {
  boost::mutex::scoped_lock lock(wakeMutex);
  return state == SCANNING ? scansLeft : 0;
}

bool cSCIP12Adapter::isScanning() { return getState() == SCANNING; }

bool cSCIP12Adapter::waitScan(int ms) { return scanSignal.wait_and_reset(ms); }

int cSCIP12Adapter::waitScan() {
  scanSignal.wait_and_reset();
  return 0;
}

int cSCIP12Adapter::resetURG() { return 0; }

int cSCIP12Adapter::fetchParameters() { return 0; }

int cSCIP12Adapter::updateStatus() { return 0; }

int cSCIP12Adapter::fetchVersionStr() { return driver->doVersion(); }

int cSCIP12Adapter::getState() {
  boost::mutex::scoped_lock lock(wakeMutex);
  return state;
}

void cSCIP12Adapter::setState(int newState) {
  boost::mutex::scoped_lock lock(wakeMutex);
  state = newState;
}

// --- worker ----------------------------------------------------------------------------

void cSCIP12Adapter::threadInit() { setState(IDLE); }

void cSCIP12Adapter::threadFinReq() {
  queue.post({EXIT, 0});
  boost::mutex::scoped_lock lock(wakeMutex);
  wakeCond.notify_all();
}

void cSCIP12Adapter::threadFunc() {
  {
    boost::mutex::scoped_lock lock(wakeMutex);
    beginSchedule();
    if (driver == nullptr) state = NO_DRIVER;
  }
  while (!isFinishing()) {
    cPass pass = beginPass();
    if (pass.state == EXITING) return;
    if (pass.state == SCANNING) {
      runPass(pass);
    } else {
      processRequest();
    }
  }
}

void cSCIP12Adapter::runPass(cPass& pass) {
  takeScan(pass);
  if (hasRequests()) processRequest();
  waitForNext(pass);
}

cSCIP12Adapter::cPass cSCIP12Adapter::beginPass() {
  boost::mutex::scoped_lock lock(wakeMutex);
  return {start, end, cluster, generation, steady_clock::now(), state, false};
}

/// Whether a scan was taken. A retry does not write to a line that is known to be dead: each write
/// would print the same error once more, ten times a second for as long as the count lasts.
bool cSCIP12Adapter::tryScan(const cPass& pass) {
  const bool isRetry = pass.generation == latestGeneration;
  latestGeneration = pass.generation;
  if (isRetry && driver->isStillDead()) return false;
  return driver->doScan(pass.start, pass.end, pass.cluster) == 0;
}

void cSCIP12Adapter::takeScan(cPass& pass) {
  pass.hasFailed = !tryScan(pass);
  while (lockable::trim(*driver->scans, static_cast<std::size_t>(maxScans))) {
  }
  countScan(pass);
  scanSignal.unblock();
}

/// Counts the pass, unless a later start has taken its place.
///
/// A count goes down with each good scan and is over at -1, so that a count of N takes N + 1 scans.
/// An endless scan is at -1 when a pass begins: a good scan takes it to -2, from where it is put
/// back; a failed one leaves it at -1, where a count is over, and so ends it. A negative count of
/// the caller's is lower still, and becomes an endless one.
void cSCIP12Adapter::countScan(const cPass& pass) {
  boost::mutex::scoped_lock requests(queue.mutex);
  boost::mutex::scoped_lock lock(wakeMutex);
  if (pass.generation != generation) return;
  if (!pass.hasFailed && scansLeft >= ENDLESS) --scansLeft;
  const bool isOver = scansLeft == ENDLESS;
  scansLeft = std::max(scansLeft, ENDLESS);
  if (!isOver) return;
  state = IDLE;
  forgetStarts();
}

bool cSCIP12Adapter::hasRequests() {
  boost::mutex::scoped_lock lock(queue.mutex);
  return !queue.queue.empty();
}

void cSCIP12Adapter::processRequest() {
  boost::this_thread::disable_interruption uninterrupted;
  boost::mutex::scoped_lock lock(queue.mutex);
  while (queue.queue.empty()) queue.cond.wait(lock);
  const reqPacket request = queue.queue.front();
  queue.queue.pop_front();
  // The state changes while the queue is locked, so that stopAll finds a start either in the queue
  // or done.
  if (changeState(request.code)) return;
  lock.unlock();
  execute(request);
}

bool cSCIP12Adapter::changeState(int code) {
  switch (code) {
    case GO_IDLE:
      setState(IDLE);
      return true;
    case GO_SCANNING:
      setState(SCANNING);
      return true;
    case EXIT:
      setState(EXITING);
      return true;
    default:
      return false;
  }
}

void cSCIP12Adapter::execute(const reqPacket& request) {
  switch (request.code) {
    case LASER_ON:
      driver->doLaser(true);
      break;
    case LASER_OFF:
      driver->doLaser(false);
      break;
    case SET_SPEED:
      driver->doSpeed(request.arg);
      break;
    default:
      break;
  }
}

// --- schedule, under wakeMutex ---------------------------------------------------------

std::int64_t cSCIP12Adapter::toMilliseconds(double seconds) {
  // In double the product may round up to a whole number that the exact one does not reach: 43
  // tenths are 4299 ms.
  const double whole = std::trunc(1000.0 * seconds);
  const bool isRoundedUp = std::fma(1000.0, seconds, -whole) < 0;
  return static_cast<std::int64_t>(whole) - (isRoundedUp ? 1 : 0);
}

void cSCIP12Adapter::beginSchedule() {
  period = pt::milliseconds(toMilliseconds(interval));
  scheduleTime = pt::microsec_clock::local_time();
  scheduleStart = steady_clock::now();
  nextTime = scheduleTime;
}

pt::ptime cSCIP12Adapter::getLocalTime() const {
  return scheduleTime + elapsedSince(scheduleStart);
}

void cSCIP12Adapter::waitForNext(const cPass& pass) {
  boost::this_thread::disable_interruption uninterrupted;
  boost::mutex::scoped_lock lock(wakeMutex);
  if (pass.generation != generation) return;
  // From when the scan was due, not from now: a late one delays none of those after it.
  if (period > pt::time_duration()) nextTime += period;
  lastTime = getLocalTime();
  const auto deadline =
      steady_clock::now() + boost::chrono::microseconds(getPause(pass).total_microseconds());
  // Only the end cuts the wait short. A stop leaves it alone, so that stopping and starting again
  // makes no sensor scan faster than its period.
  while (!isFinishing() && steady_clock::now() < deadline) wakeCond.wait_until(lock, deadline);
}

pt::time_duration cSCIP12Adapter::getPause(const cPass& pass) const {
  const pt::time_duration pause = std::min(nextTime - lastTime, period);
  if (!pass.hasFailed || state != SCANNING) return pause;
  return std::max(pause, RETRY_PAUSE - elapsedSince(pass.begin));
}

// --- callers: the driver's list and information ----------------------------------------

int cSCIP12Adapter::getScanNum() { return lockable::count(*driver->scans); }

boost::shared_ptr<cScan> cSCIP12Adapter::getScanFirst() {
  return lockable::takeFirst(*driver->scans);
}

boost::shared_ptr<cScan> cSCIP12Adapter::getScanLast() {
  return lockable::takeLast(*driver->scans);
}

boost::shared_ptr<cScan> cSCIP12Adapter::getScanFirst(int i) {
  return lockable::takeAt(*driver->scans, i);
}

boost::shared_ptr<cScan> cSCIP12Adapter::getScanLast(int i) {
  const long long place = static_cast<long long>(getScanNum()) - i - 1;
  return place == 0 ? getScanFirst(0) : boost::shared_ptr<cScan>();
}

void cSCIP12Adapter::purgeScan() { lockable::purge(*driver->scans); }

std::string cSCIP12Adapter::getVend() const { return driver->getVend(); }
std::string cSCIP12Adapter::getProd() const { return driver->getProd(); }
std::string cSCIP12Adapter::getFirm() const { return driver->getFirm(); }
std::string cSCIP12Adapter::getProt() const { return driver->getProt(); }
std::string cSCIP12Adapter::getSerial() const { return driver->getSerial(); }
int cSCIP12Adapter::getMinSpot() const { return driver->getMinSpot(); }
int cSCIP12Adapter::getMaxSpot() const { return driver->getMaxSpot(); }
int cSCIP12Adapter::getFrontSpot() const { return driver->getFrontSpot(); }
std::string cSCIP12Adapter::getStatus() const { return driver->getStatus(); }
int cSCIP12Adapter::getMinDist() const { return driver->getMinDist(); }
int cSCIP12Adapter::getMaxDist() const { return driver->getMaxDist(); }
bool cSCIP12Adapter::isActivated() const { return driver->isActivated(); }
const int& cSCIP12Adapter::getErr() const { return driver->getErr(); }
std::string cSCIP12Adapter::getLastRawCommand() const { return driver->getLastRawCommand(); }
std::string cSCIP12Adapter::getResponseBody() const { return driver->getResponseBody(); }
