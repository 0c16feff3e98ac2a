#include "tools/timestamp.h"

#include <fmt/format.h>

#include <boost/date_time/posix_time/conversion.hpp>
#include <cstdlib>
#include <ctime>

namespace tool {

std::string isoTimestamp(const boost::posix_time::ptime& local) {
  std::tm parts = boost::posix_time::to_tm(local);
  const auto microseconds = local.time_of_day().total_microseconds() % 1'000'000;
  std::tm zoned = parts;
  zoned.tm_isdst = -1;
  std::mktime(&zoned);
  const long offset = zoned.tm_gmtoff / 60;
  return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}.{:06}{}{:02}:{:02}", parts.tm_year + 1900,
                     parts.tm_mon + 1, parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec,
                     microseconds, offset < 0 ? '-' : '+', std::labs(offset) / 60,
                     std::labs(offset) % 60);
}

}  // namespace tool
