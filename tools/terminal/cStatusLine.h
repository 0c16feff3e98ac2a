#pragma once

#include <mutex>
#include <string>

namespace tool {

/// A line on the terminal of standard error that changes in place, to tell how far things are.
/// Nothing at all when that is no terminal, or one that cannot place text. It stands below the
/// cursor, so that messages of whatever source come out whole above it. Any thread.
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
  std::mutex mutex;
  bool isShown = false;  // under mutex
};

}  // namespace tool
