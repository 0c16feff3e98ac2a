#include "tarvolink/scip/cSCIPRecordReader.h"

#include "tarvolink/scip/cSCIPError.h"
#include "tarvolink/scip/cTarvoLink.h"

namespace {

// A scan of the largest sensor fits; growing to it step by step copies it twice.
constexpr std::size_t BODY_RESERVE = 3584;

}  // namespace

bool cSCIPRecordReader::read(cSCIPRecord& record) {
  record.error = 0;
  record.echo.clear();
  record.status.clear();
  record.body.clear();
  if (!readEcho(record)) return fail(record, cSCIPError::ETIMEOUT_ECHO);
  if (!readLine()) return fail(record, cSCIPError::ETIMEOUT_STAT);
  record.status = line;
  if (!readBody(record)) return fail(record, cSCIPError::ETIMEOUT_BODY);
  return true;
}

bool cSCIPRecordReader::readEcho(cSCIPRecord& record) {
  do {
    if (!readLine()) return false;
  } while (line.empty());
  record.time = boost::posix_time::microsec_clock::local_time();
  record.echo = line;
  return true;
}

bool cSCIPRecordReader::readBody(cSCIPRecord& record) {
  record.body.reserve(BODY_RESERVE);
  for (;;) {
    if (!readLine()) return false;
    if (line.empty()) return true;
    record.body += line;
    record.body += cTarvoLink::REC_EOL;
  }
}

bool cSCIPRecordReader::readLine() {
  stream.getline(buffer.data(), static_cast<std::streamsize>(buffer.size()), '\n');
  std::size_t length = static_cast<std::size_t>(stream.gcount());
  received += length;
  if (stream.fail() || received > RECORD_LIMIT) return false;
  if (!stream.eof()) --length;  // the line feed, counted but not stored
  line = std::string_view(buffer.data(), length);
  return true;
}

bool cSCIPRecordReader::fail(cSCIPRecord& record, int error) {
  record.error = error;
  stream.clear();
  return false;
}
