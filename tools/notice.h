#ifndef TARVOLINK_TOOLS_NOTICE_H
#define TARVOLINK_TOOLS_NOTICE_H

#include <cstdio>
#include <string>

namespace tool {

/// Says `text` to the user: one line on standard error. Nothing fails when nobody reads it.
inline void notice(const std::string& text) {
  std::fputs(("tarvolink: " + text + "\n").c_str(), stderr);
}

}  // namespace tool

#endif
