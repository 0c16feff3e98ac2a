#include "tools/terminal/cPalette.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

namespace tool {

namespace {

constexpr int STEPS = 32;           // of colour, so that cells side by side share one code
constexpr double FARTHEST_HUE = 4;  // in sixths of the colour circle: red is 0, blue 4

std::string variable(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

/// One channel of a full colour: `hue` in sixths of the circle counted from its own peak.
int channel(double hue, double peak) {
  const double away = std::min(std::abs(hue - peak), 6 - std::abs(hue - peak));
  return static_cast<int>(std::lround(255 * std::clamp(2 - away, 0.0, 1.0)));
}

template <std::size_t SIZE>
int chosen(const std::array<int, SIZE>& row, double part) {
  return row[std::min(static_cast<std::size_t>(part * SIZE), SIZE - 1)];
}

}  // namespace

eColours terminalColours() {
  const std::string term = variable("TERM");
  const std::string colorTerm = variable("COLORTERM");
  if (!variable("NO_COLOR").empty() || term.empty() || term == "dumb") return eColours::NONE;
  if (colorTerm == "truecolor" || colorTerm == "24bit") return eColours::TRUE_COLOUR;
  return term.find("256color") == std::string::npos ? eColours::EIGHT : eColours::PALETTE_256;
}

std::string cPalette::distance(double part) const {
  part = std::clamp(std::round(part * STEPS) / STEPS, 0.0, 1.0);
  switch (colours) {
    case eColours::NONE:
      return "";
    case eColours::EIGHT:
      return fmt::format("\x1b[22;{}m", chosen(std::array{31, 33, 32, 36, 34}, part));
    case eColours::PALETTE_256:
      return fmt::format("\x1b[38;5;{}m",
                         chosen(std::array{196, 208, 220, 154, 46, 48, 51, 39, 33}, part));
    case eColours::TRUE_COLOUR:
      break;
  }
  const double hue = part * FARTHEST_HUE;
  const int bluish = part > 0.8 ? 90 : 0;  // pure blue on black is too dark to see
  return fmt::format("\x1b[38;2;{};{};{}m", channel(hue, 0), std::max(channel(hue, 2), bluish),
                     channel(hue, 4));
}

std::string cPalette::faint() const {
  switch (colours) {
    case eColours::NONE:
      return "";
    case eColours::EIGHT:
      return "\x1b[39;2m";
    case eColours::PALETTE_256:
    case eColours::TRUE_COLOUR:
      break;
  }
  return "\x1b[38;5;244m";
}

std::string cPalette::plain() const { return colours == eColours::NONE ? "" : "\x1b[0m"; }

}  // namespace tool
