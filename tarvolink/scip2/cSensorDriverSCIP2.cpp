#include "tarvolink/scip2/cSensorDriverSCIP2.h"

#include <iostream>
#include <sstream>

#include "tarvolink/scip/cSCIPError.h"
#include "tarvolink/scip/decimal.h"
#include "tarvolink/scip2/cSCIP2Claim.h"

namespace {

constexpr int ANSWER_TIMEOUT = 2000;  // milliseconds

// Not isalpha(3), which depends on the host's locale.
bool isLetter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

}  // namespace

/// The destination of one key's value in an information answer.
struct cSensorDriverSCIP2::cField {
  cField(const char* key, std::string& text) : key(key), text(&text) {}
  cField(const char* key, int& number) : key(key), number(&number) {}

  void store(const std::string& value) const {
    if (text != nullptr) *text = value;
    if (number != nullptr) *number = parseDecimal(value);
  }

  const char* key;
  std::string* text = nullptr;
  int* number = nullptr;
};

cSensorDriverSCIP2::cSensorDriverSCIP2(boost::shared_ptr<cTarvoLink> link)
    : cSensorDriver(link), comm(link) {
  scans.reset(new cLockableScanList);
}

cSensorDriverSCIP2::~cSensorDriverSCIP2() = default;

void cSensorDriverSCIP2::start() {
  comm.run();
  activated = true;
}

void cSensorDriverSCIP2::suspend() {
  comm.giveUp();
  // Bytes after this would be taken for the answer to the caller's own command.
  link->portbuf->discardInput();
}

void cSensorDriverSCIP2::releaseLink() {
  comm.releaseLink();
  link.reset();
}

// --- one exchange ----------------------------------------------------------------------

boost::shared_ptr<cSCIPRecord> cSensorDriverSCIP2::doRaw2(std::string command, int) {
  cSCIP2Claim request(comm, command, 1);
  boost::shared_ptr<cSCIPRecord> record = request.waitRecord(ANSWER_TIMEOUT);
  if (!record) {
    record.reset(new cSCIPRecord);
    record->error = cSCIPError::ETIMEOUT_ECHO;
  }
  if (!hasFailed(*record)) record->error = toError(record->status);
  return record;
}

bool cSensorDriverSCIP2::isLetterStatus(const std::string& status) {
  return status.size() > 1 && isLetter(status[1]);
}

/// The code word of a status without its checksum: 0, or the sensor's status with its mark.
int cSensorDriverSCIP2::toError(const std::string& status) {
  if (isLetterStatus(status)) return cSCIPError::ESCIP2_EXTSTATUS | status[1];
  const int number = parseDecimal(status);
  return number == 0 ? 0 : cSCIPError::ESCIP2_STATUS | number;
}

bool cSensorDriverSCIP2::hasFailed(const cSCIPRecord& record) {
  return (record.error & cSCIPError::ESTATUS_MASK) != 0;
}

// --- information -----------------------------------------------------------------------

int cSensorDriverSCIP2::fetchVersionStr() {
  const boost::shared_ptr<cSCIPRecord> record = doRaw2("VV", 1);
  if (!record) {
    std::cerr << "fVS:: timed out" << std::endl;
    return -1;
  }
  return readFields(
      *record, "VV",
      {{"VEND", vend}, {"PROD", prod}, {"FIRM", firm}, {"PROT", prot}, {"SERI", serial}});
}

int cSensorDriverSCIP2::fetchParameters() {
  return readFields(*doRaw2("PP", 1), "PP",
                    {{"DMIN", minDist},
                     {"DMAX", maxDist},
                     {"ARES", numSpot},
                     {"AMIN", minSpot},
                     {"AMAX", maxSpot},
                     {"AFRT", frontSpot},
                     {"SCAN", scanSpeed}});
}

int cSensorDriverSCIP2::updateStatus() {
  return readFields(*doRaw2("II", 1), "II", {{"STAT", status}});
}

/// Reads lines of key (4 characters), ":", value, ";" and checksum. Values stored before a bad line
/// stay stored.
int cSensorDriverSCIP2::readFields(const cSCIPRecord& answer, const char* command,
                                   std::initializer_list<cField> fields) {
  // It may be a late answer to an earlier command: without these keys it would pass as a success.
  const bool isOwn = answer.echo.compare(0, 2, command) == 0;
  if (hasFailed(answer) || !isOwn) return -1;
  boost::mutex::scoped_lock guard(scanMutex);  // a start in another thread uses the numbers
  std::istringstream lines(answer.body);
  for (std::string line; std::getline(lines, line);) {
    if (!cSCIP2Comm::validateLine(line, true)) return -1;
    const std::string key = line.substr(0, 4);
    const std::string value = line.substr(5);  // throws for a line too short to hold one
    for (const cField& field : fields) {
      if (key == field.key) field.store(value);
    }
  }
  return 0;
}

// --- control ---------------------------------------------------------------------------

int cSensorDriverSCIP2::doControl(const char* command) {
  return hasFailed(*doRaw2(command, 1)) ? -1 : 0;
}

int cSensorDriverSCIP2::startStoringScan() { return doControl("BM"); }

int cSensorDriverSCIP2::stopAll() { return doControl("QT"); }

int cSensorDriverSCIP2::resetURG() { return doControl("SS"); }

int cSensorDriverSCIP2::doLaser(bool) { return doControl("BM"); }

int cSensorDriverSCIP2::doVersion() { return fetchVersionStr(); }

int cSensorDriverSCIP2::doSpeed(int) {
  std::cerr << "SCIP2::doSpeed not implemented yet" << std::endl;
  return -1;
}

int cSensorDriverSCIP2::setCommSpeed(int) { return -1; }

int cSensorDriverSCIP2::doRaw(std::string) { return -1; }

// --- interfaces ------------------------------------------------------------------------

const int& cSensorDriverSCIP2::getErr() const { return cSensorDriver::getErr(); }

std::string cSensorDriverSCIP2::getLastRawCommand() const {
  return cSensorDriver::getLastRawCommand();
}

std::string cSensorDriverSCIP2::getResponseBody() const { return cSensorDriver::getResponseBody(); }

iSCIP1IF* cSensorDriverSCIP2::getSCIP1IF() { return this; }

iSCIP2IF* cSensorDriverSCIP2::getSCIP2IF() { return this; }
