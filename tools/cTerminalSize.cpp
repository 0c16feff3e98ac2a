#include "tools/cTerminalSize.h"

#include <sys/ioctl.h>

#include <charconv>
#include <cstdlib>
#include <cstring>

namespace tool {

namespace {

constexpr int MOST = 1000;  // no picture needs more, whatever the environment says

int fromEnvironment(const char* name, int otherwise) {
  const char* text = std::getenv(name);
  int value = 0;
  if (text != nullptr) std::from_chars(text, text + std::strlen(text), value);
  return value > 0 && value <= MOST ? value : otherwise;
}

int known(int told, const char* name, int otherwise) {
  return told > 0 && told <= MOST ? told : fromEnvironment(name, otherwise);
}

}  // namespace

cTerminalSize cTerminalSize::of(int fd) {
  winsize window{};
  if (ioctl(fd, TIOCGWINSZ, &window) != 0) window = {};
  return {known(window.ws_col, "COLUMNS", 80), known(window.ws_row, "LINES", 24)};
}

}  // namespace tool
