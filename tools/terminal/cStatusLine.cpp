#include "tools/terminal/cStatusLine.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "tools/terminal/cTerminalSize.h"

namespace tool {

namespace {

// What is below the cursor goes; then a line down, the text, and back up.
constexpr auto CLEAR_BELOW = "\x1b[J";
constexpr auto BACK = "\r\x1b[A";

bool canPlaceText() {
  const char* const term = std::getenv("TERM");
  return isatty(STDERR_FILENO) != 0 && term != nullptr && std::string(term) != "dumb" &&
         *term != '\0';
}

}  // namespace

cStatusLine::cStatusLine() : isPossible(canPlaceText()) {}

void cStatusLine::show(const std::string& text) {
  if (!isPossible) return;
  const auto columns = static_cast<std::size_t>(cTerminalSize::of(STDERR_FILENO).columns);
  const std::lock_guard<std::mutex> lock(mutex);
  std::fputs((CLEAR_BELOW + ("\n" + text.substr(0, columns - 1)) + BACK).c_str(), stderr);
  isShown = true;
}

void cStatusLine::clear() {
  const std::lock_guard<std::mutex> lock(mutex);
  if (isShown) std::fputs(CLEAR_BELOW, stderr);
  isShown = false;
}

}  // namespace tool
