#pragma once

#include <string>

/// Classifies a command's characters, in any locale.
class cSimText {
 public:
  static bool isDigit(char c) { return c >= '0' && c <= '9'; }
  /// Whether a text is one digit or more and nothing else.
  static bool isNumber(const std::string& text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
  }
};
