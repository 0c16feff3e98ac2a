#include "tools/terminal/cStatusLine.h"

#include <unistd.h>

#include <cstdlib>

#include "tools/base/messages.h"
#include "tools/terminal/cTerminalSize.h"

namespace tool {

namespace {

bool canPlaceText() {
  const char* const term = std::getenv("TERM");
  return isatty(STDERR_FILENO) != 0 && term != nullptr && std::string(term) != "dumb" &&
         *term != '\0';
}

}  // namespace

cStatusLine::cStatusLine() : isPossible(verbosity > eVerbosity::ERRORS && canPlaceText()) {}

void cStatusLine::show(const std::string& text) {
  if (!isPossible) return;
  const auto columns = static_cast<std::size_t>(cTerminalSize::of(STDERR_FILENO).columns);
  showBelow(text.substr(0, columns - 1));
}

void cStatusLine::clear() {
  if (isPossible) showBelow("");
}

}  // namespace tool
