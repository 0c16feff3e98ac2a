#include "tools/output/timestamp.h"

#include <fmt/format.h>

#include <cstdlib>
#include <ctime>

namespace tool {

std::string isoTimestamp(std::int64_t utc) {
  const auto seconds = static_cast<std::time_t>(utc / 1'000'000'000);
  std::tm parts{};
  localtime_r(&seconds, &parts);
  const long offset = parts.tm_gmtoff / 60;
  return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}.{:06}{}{:02}:{:02}", parts.tm_year + 1900,
                     parts.tm_mon + 1, parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec,
                     utc / 1000 % 1'000'000, offset < 0 ? '-' : '+', std::labs(offset) / 60,
                     std::labs(offset) % 60);
}

}  // namespace tool
