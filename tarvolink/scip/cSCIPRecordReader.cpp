#include "tarvolink/scip/cSCIPRecordReader.h"

#include "tarvolink/scip/cSCIPError.h"
#include "tarvolink/scip/cTarvoLink.h"

bool cSCIPRecordReader::read(cSCIPRecord& record) {
  record.error = 0;
  record.echo.clear();
  record.status.clear();
  record.body.clear();
  if (!readEcho(record)) return fail(record, cSCIPError::ETIMEOUT_ECHO);
  if (!readLine(buffer.data())) return fail(record, cSCIPError::ETIMEOUT_STAT);
  record.status = line;
  if (!readBody(record)) return fail(record, cSCIPError::ETIMEOUT_BODY);
  return true;
}

bool cSCIPRecordReader::readEcho(cSCIPRecord& record) {
  do {
    if (!readLine(buffer.data())) return false;
  } while (line.empty());
  record.time = boost::posix_time::microsec_clock::local_time();
  record.echo = line;
  return true;
}

bool cSCIPRecordReader::readBody(cSCIPRecord& record) {
  char* end = buffer.data();
  bool isRead = false;
  while ((isRead = readLine(end)) && !line.empty()) {
    end += line.size();
    *end++ = cTarvoLink::REC_EOL[0];
  }
  record.body.assign(buffer.data(), end);
  return isRead;
}

/// Reads a line to `to`, within `buffer`.
bool cSCIPRecordReader::readLine(char* to) {
  stream.getline(to, LINE_LIMIT + 1, '\n');
  std::size_t length = static_cast<std::size_t>(stream.gcount());
  received += length;
  if (stream.fail() || received > RECORD_LIMIT) return false;
  if (!stream.eof()) --length;  // the line feed, counted but not stored
  line = std::string_view(to, length);
  return true;
}

bool cSCIPRecordReader::fail(cSCIPRecord& record, int error) {
  record.error = error;
  stream.clear();
  return false;
}
