#pragma once

#include <cstdio>
#include <string>

namespace tool {

/// Says `text` to the user: one line on standard error. Nothing fails when nobody reads it.
inline void printMessage(const std::string& text) {
  std::fprintf(stderr, "tarvolink: %s\n", text.c_str());
}

}  // namespace tool
