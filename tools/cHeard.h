#pragma once

#include <string>

#include "tools/cWatchedPort.h"

namespace tool {

/// What kind of bytes came when a sensor was asked; the later ones tell more of the cause.
enum class eHeard { NOTHING, LINE_ENDS, GARBAGE, TEXT, OWN_WORDS, ANSWER };

/// What a line said at one speed while a sensor was looked for. Plain text to text, no device.
class cHeard {
 public:
  explicit cHeard(const cTraffic& traffic);

  eHeard getKind() const { return kind; }

  /// For the user, as "garbage (37 bytes)".
  std::string getText() const;

 private:
  eHeard kind;
  std::size_t size;
  std::string sample;  // of TEXT: the beginning of its first line
};

/// The likely cause when nothing better than `best` was heard, and its cure.
std::string causeOf(eHeard best);

}  // namespace tool
