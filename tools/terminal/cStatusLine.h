#pragma once

#include <string>

namespace tool {

/// A line on the terminal of standard error that changes in place, to report how far things are.
/// Nothing at all with `-q`, and when that is no terminal, or one that cannot place text. It stands
/// below the cursor, and a message takes its place. Any thread.
class cStatusLine {
 public:
  cStatusLine();
  cStatusLine(const cStatusLine&) = delete;
  cStatusLine& operator=(const cStatusLine&) = delete;
  ~cStatusLine() { clear(); }

  /// Shows `text`, cut to the terminal's width.
  void show(const std::string& text);

  /// Takes the line away.
  void clear();

 private:
  const bool isPossible;
};

}  // namespace tool
