#pragma once

#include <fmt/format.h>

#include <string>

namespace tool {

/// "1 scan", "20 scans".
template <class tCount>
std::string plural(tCount count, const char* noun) {
  return fmt::format("{} {}{}", count, noun, count == 1 ? "" : "s");
}

}  // namespace tool
