#pragma once

#include <string>

namespace tool {

/// A sensor's own text made fit for a terminal or a drawing: it may hold anything.
inline std::string printable(std::string text) {
  for (char& c : text) {
    if (c < ' ' || c > '~') c = '?';
  }
  return text;
}

}  // namespace tool
