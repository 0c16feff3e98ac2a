#pragma once

#include <string>

namespace tool {

/// How many colours a terminal has.
enum class eColours { NONE, EIGHT, PALETTE_256, TRUE_COLOUR };

/// What the terminal of this process has, by NO_COLOR, TERM and COLORTERM as is customary.
eColours terminalColours();

/// The escape codes that choose the colours of a picture; all empty without colours.
class cPalette {
 public:
  explicit cPalette(eColours available) : colours(available) {}

  /// The colour of a reading: `part` is 0 at the sensor (red) and 1 at the edge and beyond (blue).
  std::string distance(double part) const;

  /// The colour of rings, rays and labels.
  std::string faint() const;

  /// Back to the terminal's own.
  std::string plain() const;

 private:
  eColours colours;
};

}  // namespace tool
