#pragma once

#include <string>

namespace tool {

/// A sensor's own text made fit for a terminal or a drawing: it may hold anything.
inline std::string sanitized(std::string text) {
  for (char& c : text) {
    if (c < ' ' || c > '~') c = '?';
  }
  return text;
}

/// A path or a user's word for a message: control characters as "\x0a", so that the message stays
/// one line and moves no cursor.
inline std::string oneLine(const std::string& text) {
  constexpr auto DIGITS = "0123456789abcdef";
  std::string line;
  for (const char c : text) {
    const auto code = static_cast<unsigned char>(c);
    const bool isControl = code < ' ' || code == 0x7F;
    line +=
        isControl ? std::string("\\x") + DIGITS[code / 16] + DIGITS[code % 16] : std::string(1, c);
  }
  return line;
}

}  // namespace tool
