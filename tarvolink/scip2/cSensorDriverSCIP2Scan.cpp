// The scanning side of cSensorDriverSCIP2.

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <limits>
#include <sstream>
#include <string_view>
#include <utility>

#include "tarvolink/scip/cSCIPError.h"
#include "tarvolink/scip2/cSCIP2Claim.h"
#include "tarvolink/scip2/cSensorDriverSCIP2.h"
#include "tarvolink/scip2/checkedLine.h"

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
  const char* const command = maxDistance > LONGEST_OF_TWO_CHARACTERS ? "MD" : "MS";
  setAngles(firstStep, lastStep, clusterCount);
  constexpr int MOST = std::numeric_limits<int>::max() - 1;
  const int expected = numScans == 0 ? -1 : std::min(numScans, MOST) + 1;
  char line[COMMAND_SIZE];
  std::snprintf(line, sizeof line, "%s%04d%04d%02d%01d%02d", command, firstStep, lastStep,
                clusterCount, scanInterval, numScans);
  cSCIP2Claim request(comm, line, expected);
  const boost::shared_ptr<cSCIPRecord> acknowledgement = request.waitRecord(START_TIMEOUT);
  if (!acknowledgement || !acceptStart(*acknowledgement)) {
    if (!acknowledgement) std::cerr << " startScan:: comm error??" << std::endl;
    request.refuse();
    return -1;
  }
  boost::shared_ptr<cSCIP2RecordListener> replaced = request.keep();
  boost::mutex::scoped_lock guard(scanMutex);
  scanListener.swap(replaced);
  return 0;
}

bool cSensorDriverSCIP2::acceptStart(cSCIPRecord& acknowledgement) {
  if (!hasFailed(acknowledgement)) {
    acknowledgement.error = toError(acknowledgement.status);
    if ((acknowledgement.error & cSCIPError::ESCIP2_EXTSTATUS) != 0) {
      std::cerr << " startScan:: scip2ExtStatus:" << acknowledgement.status << std::endl;
    } else if ((acknowledgement.error & cSCIPError::ESCIP2_STATUS) != 0) {
      std::cerr << " startScan:: scip2Status:"
                << (acknowledgement.error & ~cSCIPError::ESCIP2_STATUS) << std::endl;
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
  tryRecordToScan();
  aborted->mute();  // a sensor that missed "QT" goes on, and no call could take that
  boost::shared_ptr<cSCIP2RecordListener> released;
  boost::mutex::scoped_lock guard(scanMutex);
  if (scanListener != aborted) return result;  // another thread has aborted it, and may scan anew
  released.swap(lastScanListener);
  lastScanListener.swap(scanListener);
  return result;
}

bool cSensorDriverSCIP2::isScanning() { return static_cast<bool>(getScanListener()); }

int cSensorDriverSCIP2::resumeScan() { return -1; }

int cSensorDriverSCIP2::scansToGo() { return -1; }

int cSensorDriverSCIP2::getStoredScan(int firstStep, int lastStep, int clusterCount,
                                      int maxDistance) {
  const char* const command = maxDistance > LONGEST_OF_TWO_CHARACTERS ? "GD" : "GS";
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
  std::ostringstream parameters;
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
  bool isConverted = false;
  while (listener->hasRecords()) {
    const boost::shared_ptr<cSCIPRecord> record = listener->waitRecord(WAITING_RECORD_TIMEOUT);
    if (record) isConverted = pushScanRecord(record);
  }
  return isConverted;
}

bool cSensorDriverSCIP2::pushScanRecord(boost::shared_ptr<cSCIPRecord> record) {
  std::string_view body = record->body;
  std::string_view line;
  if (!takeLine(body, line)) return true;
  if (!takeSum(line, false)) return false;
  static_cast<void>(decode6bit(std::string(line), 4).at(0));  // the sensor's clock: raises for none
  std::string data;
  data.reserve(body.size());
  while (takeLine(body, line)) {
    if (!takeSum(line, false)) return false;
    data += line;  // a reading may run across a line break
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
