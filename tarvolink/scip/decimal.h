#pragma once

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <string>

/// The decimal number at the beginning of `text`, as atoi(3) reads it; 0 if there is none. A number
/// out of range becomes the nearest int, where the result of atoi(3) would be undefined.
inline int parseDecimal(const std::string& text) {
  constexpr long LOWEST = std::numeric_limits<int>::min();
  constexpr long HIGHEST = std::numeric_limits<int>::max();
  return static_cast<int>(std::clamp(std::strtol(text.c_str(), nullptr, 10), LOWEST, HIGHEST));
}
