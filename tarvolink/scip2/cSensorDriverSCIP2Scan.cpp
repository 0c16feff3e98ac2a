// The scanning side of cSensorDriverSCIP2.

#include <algorithm>
#include <cstdio>
#include <exception>
#include <iostream>
#include <limits>
#include <sstream>
#include <string_view>
#include <utility>

#include "tarvolink/scip/cSCIPError.h"
#include "tarvolink/scip/decimal.h"
#include "tarvolink/scip2/cSCIP2Claim.h"
#include "tarvolink/scip2/cSensorDriverSCIP2.h"
#include "tarvolink/scip2/checksum.h"

namespace {

constexpr double FULL_TURN = 6.283185307179586;  // radians

// Two characters carry 12 bits: beyond that distances need three (MD, GD).
constexpr int LONGEST_OF_TWO_CHARACTERS = 4095;

constexpr int START_TIMEOUT = 200;          // milliseconds
constexpr int WAITING_RECORD_TIMEOUT = 10;  // milliseconds
constexpr int DISCARDING_TIMEOUT = 10000;   // milliseconds

constexpr std::size_t COMMAND_SIZE = 80;  // the letters and five numbers of up to 11 characters

}  // namespace

// --- starting and ending ---------------------------------------------------------------

int cSensorDriverSCIP2::startScan(int firstStep, int lastStep, int clusterCount, int scanInterval,
                                  int numScans, int maxDistance) {
  setAngles(firstStep, lastStep, clusterCount);
  constexpr int MAX_SCANS = std::numeric_limits<int>::max() - 1;
  // The acknowledgement is a record too.
  const int expected = numScans == 0 ? -1 : std::min(numScans, MAX_SCANS) + 1;
  cSCIP2Claim request(
      comm, makeScanCommand(firstStep, lastStep, clusterCount, scanInterval, numScans, maxDistance),
      expected);
  const boost::shared_ptr<cSCIPRecord> acknowledgement = request.waitRecord(START_TIMEOUT);
  if (!acknowledgement || !acceptStart(*acknowledgement)) {
    if (!acknowledgement) std::cerr << " startScan:: comm error??" << std::endl;
    request.discard();
    return -1;
  }
  // Declared before the lock: what it holds in the end goes back to `comm`, which locks its lists.
  boost::shared_ptr<cSCIP2RecordListener> replaced = request.detach();
  boost::mutex::scoped_lock guard(scanMutex);
  scanListener.swap(replaced);
  return 0;
}

std::string cSensorDriverSCIP2::makeScanCommand(int firstStep, int lastStep, int clusterCount,
                                                int scanInterval, int numScans, int maxDistance) {
  char line[COMMAND_SIZE];
  std::snprintf(line, sizeof line, "%s%04d%04d%02d%01d%02d", isWide(maxDistance) ? "MD" : "MS",
                firstStep, lastStep, clusterCount, scanInterval, numScans);
  return line;
}

bool cSensorDriverSCIP2::isWide(int maxDistance) { return maxDistance > LONGEST_OF_TWO_CHARACTERS; }

bool cSensorDriverSCIP2::acceptStart(cSCIPRecord& acknowledgement) {
  if (!hasFailed(acknowledgement)) {
    const std::string& status = acknowledgement.status;
    acknowledgement.error = toError(status);
    // By the status, not by the code word: a number above 1023 reaches the bits of the marks.
    if (isLetterStatus(status)) {
      std::cerr << " startScan:: scip2ExtStatus:" << status << std::endl;
    } else if (const int number = parseDecimal(status); number != 0) {
      std::cerr << " startScan:: scip2Status:" << number << std::endl;
    }
  }
  if (!hasFailed(acknowledgement)) return true;
  std::cerr << " startScan:: error??" << std::endl;
  return false;
}

int cSensorDriverSCIP2::abortScan() {
  const boost::shared_ptr<cSCIP2RecordListener> aborted = getScanListener();
  if (!aborted) return -1;
  const int result = stopAll();
  // Before the conversion, which may throw: the scan has ended in any case.
  parkListener(aborted);
  convertAll(*aborted);
  return result;
}

/// Moves the aborted scan's listener to `lastScanListener`.
void cSensorDriverSCIP2::parkListener(const boost::shared_ptr<cSCIP2RecordListener>& aborted) {
  boost::shared_ptr<cSCIP2RecordListener> released;  // before the lock, see startScan
  boost::mutex::scoped_lock guard(scanMutex);
  if (scanListener != aborted) return;  // another thread has aborted it and may have a new scan
  released.swap(lastScanListener);
  lastScanListener.swap(scanListener);
}

/// Converts all records of an aborted scan, since no later call could. Rethrows what one of them
/// threw when the others are converted.
void cSensorDriverSCIP2::convertAll(cSCIP2RecordListener& aborted) {
  std::exception_ptr fault;
  while (aborted.hasRecords()) {
    try {
      convertWaiting(aborted);
    } catch (...) {
      fault = std::current_exception();
    }
  }
  aborted.discardFurther();  // a sensor that missed "QT" goes on, and no call could take its scans
  if (fault) std::rethrow_exception(fault);
}

bool cSensorDriverSCIP2::isScanning() { return static_cast<bool>(getScanListener()); }

int cSensorDriverSCIP2::resumeScan() { return -1; }

int cSensorDriverSCIP2::scansToGo() { return -1; }

int cSensorDriverSCIP2::getStoredScan(int firstStep, int lastStep, int clusterCount,
                                      int maxDistance) {
  const char* const command = isWide(maxDistance) ? "GD" : "GS";
  setAngles(firstStep, lastStep, clusterCount);
  logScanParameters();
  char line[COMMAND_SIZE];
  std::snprintf(line, sizeof line, "%s%04d%04d%02d", command, firstStep, lastStep, clusterCount);
  const boost::shared_ptr<cSCIPRecord> record = doRaw2(line, 1);
  return !hasFailed(*record) && pushScanRecord(record) ? 0 : -1;
}

int cSensorDriverSCIP2::doScan(int start, int end, int cluster) {
  return getStoredScan(start, end, cluster, LONGEST_OF_TWO_CHARACTERS);
}

void cSensorDriverSCIP2::setAngles(int firstStep, int lastStep, int clusterCount) {
  boost::mutex::scoped_lock guard(scanMutex);
  const double resolution = FULL_TURN / getNumSpot();
  firstAngle = (static_cast<double>(firstStep) - getFrontSpot()) * resolution;
  lastAngle = (static_cast<double>(lastStep) - getFrontSpot()) * resolution;
  angleStep = clusterCount * resolution;
}

void cSensorDriverSCIP2::logScanParameters() {
  std::ostringstream parameters;  // one line is one insertion: other threads' messages stay outside
  {
    boost::mutex::scoped_lock guard(scanMutex);
    parameters << "Scan points parameter step:" << FULL_TURN / getNumSpot() << " skip:" << angleStep
               << " start:" << firstAngle << " end:" << lastAngle << '\n';
  }
  std::cerr << parameters.str() << std::flush;
}

// --- taking scans ----------------------------------------------------------------------

int cSensorDriverSCIP2::getScanNum() {
  tryRecordToScan();
  return lockable::count(*scans);
}

boost::shared_ptr<cScan> cSensorDriverSCIP2::getScanFirst() {
  tryRecordToScan();
  return lockable::takeFirst(*scans);
}

boost::shared_ptr<cScan> cSensorDriverSCIP2::getScanLast() {
  tryRecordToScan();
  return lockable::takeLast(*scans);
}

boost::shared_ptr<cScan> cSensorDriverSCIP2::getScanLast(int) {
  tryRecordToScan();
  return boost::shared_ptr<cScan>();
}

boost::shared_ptr<cScan> cSensorDriverSCIP2::getScanFirst(int) {
  return boost::shared_ptr<cScan>();
}

void cSensorDriverSCIP2::purgeScan() {}

bool cSensorDriverSCIP2::waitScan(int timeout) {
  const boost::shared_ptr<cSCIP2RecordListener> listener = getScanListener();
  const boost::shared_ptr<cSCIPRecord> record = listener->waitRecord(timeout);
  if (record) pushScanRecord(record);
  return !lockable::isEmpty(*scans);
}

int cSensorDriverSCIP2::waitScan() {
  const boost::shared_ptr<cSCIP2RecordListener> listener = getScanListener();
  return listener->waitRecord(DISCARDING_TIMEOUT) ? 1 : 0;
}

boost::shared_ptr<cSCIP2RecordListener> cSensorDriverSCIP2::getScanListener() {
  boost::mutex::scoped_lock guard(scanMutex);
  return scanListener;
}

// --- converting records ----------------------------------------------------------------

bool cSensorDriverSCIP2::tryRecordToScan() {
  const boost::shared_ptr<cSCIP2RecordListener> listener = getScanListener();
  if (!listener) {
    std::cerr << "tryRecordToScan :: no listener ready." << std::endl;
    return false;
  }
  return convertWaiting(*listener);
}

/// The last record's result; false for none.
bool cSensorDriverSCIP2::convertWaiting(cSCIP2RecordListener& listener) {
  bool isConverted = false;
  while (listener.hasRecords()) {
    const boost::shared_ptr<cSCIPRecord> record = listener.waitRecord(WAITING_RECORD_TIMEOUT);
    if (record) isConverted = pushScanRecord(record);
  }
  return isConverted;
}

bool cSensorDriverSCIP2::pushScanRecord(boost::shared_ptr<cSCIPRecord> record) {
  std::string_view body = record->body;
  std::string_view line;
  if (!nextLine(body, line)) return true;
  if (!stripChecksum(line, false)) return false;
  // The sensor's own clock. Not used, but a record without one is not a scan's: at() throws.
  static_cast<void>(decode6bit(std::string(line), 4).at(0));
  std::string data;
  data.reserve(body.size());
  while (nextLine(body, line)) {
    if (!stripChecksum(line, false)) return false;
    data += line;  // a reading may continue on the next line
  }
  if (data.empty()) return true;
  const bool isThreeCharacters = record->echo.size() > 1 && record->echo[1] == 'D';
  const boost::shared_ptr<cScan> scan =
      makeScan(decode6bit(std::move(data), isThreeCharacters ? 3 : 2));
  scan->timeStamp = kavTBX::cTime(record->time);
  lockable::append(*scans, scan);
  return true;
}

boost::shared_ptr<cScan> cSensorDriverSCIP2::makeScan(std::vector<int> distances) {
  boost::mutex::scoped_lock guard(scanMutex);
  scanFactory.scan.reset(new cScan(firstAngle, lastAngle, angleStep));
  scanFactory.addData(std::move(distances));
  return scanFactory.scan;
}
