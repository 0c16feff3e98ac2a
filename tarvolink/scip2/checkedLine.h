#pragma once

#include <cstdint>
#include <string_view>

/// Whether `line` ends in the sum of what stands before it: ((bytes added up) AND 0x3F) + 0x30;
/// with `hasSemicolon`, a ";" before the sum is not in it. What is not summed is taken off the end
/// of `line`, whatever the result, unless it is shorter than 3 characters; then it is refused.
inline bool takeSum(std::string_view& line, bool hasSemicolon) {
  if (line.size() < 3) return false;
  const auto sum = static_cast<std::uint8_t>(line.back());
  line.remove_suffix(1);
  if (hasSemicolon && line.back() == ';') line.remove_suffix(1);
  std::uint8_t total = 0;  // the six bits that count are the same as in a wider type
  for (const char c : line) total = static_cast<std::uint8_t>(total + static_cast<std::uint8_t>(c));
  return static_cast<std::uint8_t>((total & 0x3F) + 0x30) == sum;
}

/// Takes the next line, without its line feed, off the front of `text`; false: none is left.
inline bool takeLine(std::string_view& text, std::string_view& line) {
  if (text.empty()) return false;
  const std::size_t end = text.find('\n');
  line = text.substr(0, end);
  text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  return true;
}
