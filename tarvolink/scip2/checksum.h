#pragma once

#include <cstdint>
#include <stdexcept>
#include <string_view>

/// The character that ends a line with this text: ((the bytes, added up) AND 0x3F) + 0x30.
inline char checksumOf(std::string_view text) {
  // Wrapping is harmless: the six bits that count are the same as in a wider type.
  std::uint8_t total = 0;
  for (const char c : text) total = static_cast<std::uint8_t>(total + static_cast<std::uint8_t>(c));
  return static_cast<char>((total & 0x3F) + 0x30);
}

/// Whether `line` ends in its checksum.
///
/// Takes the checksum off the end of `line`, whatever the result, and with `hasSemicolon` a ";"
/// before it, which it does not cover. Leaves a line of fewer than 3 characters alone: false.
/// Throws std::out_of_range for an empty one.
inline bool stripChecksum(std::string_view& line, bool hasSemicolon) {
  if (line.empty()) throw std::out_of_range("SCIP 2.0: an empty line where a checksum is due");
  if (line.size() < 3) return false;
  const char checksum = line.back();
  line.remove_suffix(1);
  if (hasSemicolon && line.back() == ';') line.remove_suffix(1);
  return checksumOf(line) == checksum;
}

/// Takes the next line, without its line feed, off the front of `text`. False: none is left.
inline bool nextLine(std::string_view& text, std::string_view& line) {
  if (text.empty()) return false;
  const std::size_t end = text.find('\n');
  line = text.substr(0, end);
  text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  return true;
}
