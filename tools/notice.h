#pragma once

#include <cstdio>
#include <string>

namespace tool {

/// Says `text` to the user: one line on standard error. Nothing fails when nobody reads it.
inline void notice(const std::string& text) {
  std::fputs(("tarvolink: " + text + "\n").c_str(), stderr);
}

}  // namespace tool
