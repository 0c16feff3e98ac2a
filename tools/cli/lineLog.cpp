#include "tools/cli/lineLog.h"

#include <fmt/format.h>

#include <ctime>
#include <string>

#include "tools/base/messages.h"
#include "tools/base/printable.h"

namespace tool {

namespace {

constexpr std::size_t MAX_SHOWN = 60;  // of a scan the first line tells enough

std::string clockTime() {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  std::tm parts{};
  localtime_r(&now.tv_sec, &parts);
  return fmt::format("{:02}:{:02}:{:02}.{:03}", parts.tm_hour, parts.tm_min, parts.tm_sec,
                     now.tv_nsec / 1000000);
}

/// Its lines behind each other.
std::string excerptOf(std::string_view bytes) {
  std::string text;
  for (const char c : bytes.substr(0, MAX_SHOWN)) text += c == '\n' ? " | " : std::string(1, c);
  return sanitized(text) + (bytes.size() > MAX_SHOWN ? "..." : "");
}

}  // namespace

tarvo::tLineTap lineLog() {
  if (verbosity < eVerbosity::DETAILS) return nullptr;
  return [](const tarvo::cLineEvent& event) {
    printDetail(fmt::format(
        "{} {} at {} bits/s, {} {} bytes: {}", clockTime(), oneLine(event.device), event.lineSpeed,
        event.isSent ? "sent" : "received", event.bytes.size(), excerptOf(event.bytes)));
  };
}

}  // namespace tool
