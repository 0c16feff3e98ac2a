#include "tarvolink/scip/cSCIPRecordReader.h"

#include <sys/time.h>
#include <time.h>

#include "tarvolink/scip/cSCIPError.h"
#include "tarvolink/scip/cTarvoLink.h"

namespace {

constexpr std::int64_t QUARTER_OF_AN_HOUR = 900;  // seconds: no zone changes its offset within one

/// Seconds from UTC to local time at `now`. localtime_r takes two fifths of a scan record's
/// reading, so it is asked once a quarter of an hour, and when the host has set another zone
/// (tzset).
long zoneOffset(time_t now) {
  thread_local std::int64_t quarter = -1;
  thread_local long zone = 0;
  thread_local long offset = 0;
  if (quarter != now / QUARTER_OF_AN_HOUR || zone != ::timezone) {
    tm parts{};
    localtime_r(&now, &parts);
    quarter = now / QUARTER_OF_AN_HOUR;
    zone = ::timezone;
    offset = parts.tm_gmtoff;
  }
  return offset;
}

boost::posix_time::ptime localTime() {
  static const boost::posix_time::ptime EPOCH(boost::gregorian::date(1970, 1, 1));
  timeval now{};
  gettimeofday(&now, nullptr);
  return EPOCH + boost::posix_time::microseconds(
                     (now.tv_sec + zoneOffset(now.tv_sec)) * std::int64_t{1000000} + now.tv_usec);
}

}  // namespace

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
  record.time = localTime();
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
  received += length;  // of skipped empty lines too: endless line feeds must end the read
  if (stream.fail() || received > RECORD_LIMIT) return false;
  if (!stream.eof()) --length;  // the line feed, counted but not stored
  line = std::string_view(to, length);
  return true;
}

bool cSCIPRecordReader::fail(cSCIPRecord& record, int error) {
  record.error = error;
  stream.clear();  // a time-out is the stream's end of file, and more may come
  return false;
}
