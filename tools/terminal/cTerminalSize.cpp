#include "tools/terminal/cTerminalSize.h"

#include <sys/ioctl.h>

#include <charconv>
#include <cstdlib>
#include <cstring>

namespace tool {

namespace {

constexpr int MAX = 1000;  // no picture needs more, whatever the environment says

int fromEnvironment(const char* name, int otherwise) {
  const char* text = std::getenv(name);
  int value = 0;
  if (text != nullptr) std::from_chars(text, text + std::strlen(text), value);
  return value > 0 && value <= MAX ? value : otherwise;
}

int plausible(int reported, const char* name, int otherwise) {
  return reported > 0 && reported <= MAX ? reported : fromEnvironment(name, otherwise);
}

}  // namespace

cTerminalSize cTerminalSize::of(int fd) {
  winsize window{};
  if (ioctl(fd, TIOCGWINSZ, &window) != 0) window = {};
  return {plausible(window.ws_col, "COLUMNS", 80), plausible(window.ws_row, "LINES", 24)};
}

}  // namespace tool
