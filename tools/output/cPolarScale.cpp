#include "tools/output/cPolarScale.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace tool {

namespace {

constexpr std::array<double, 8> FIGURES = {1, 1.5, 2, 3, 4, 5, 6, 8};
constexpr int FIGURE_COUNT = static_cast<int>(FIGURES.size());
constexpr int FIRST = 2 * FIGURE_COUNT;  // 100 mm
constexpr int LAST = 5 * FIGURE_COUNT;   // 100 m

}  // namespace

cPosition positionAt(double distance, double angle) {
  return {-distance * std::sin(angle), distance * std::cos(angle)};
}

cPolarScale::cPolarScale(int wanted) : place(std::clamp(wanted, FIRST, LAST)) {}

cPolarScale cPolarScale::covering(double millimetres) {
  cPolarScale scale(FIRST);
  while (scale.getReach() < millimetres && scale.place < LAST) ++scale.place;
  return scale;
}

double cPolarScale::getReach() const {
  return FIGURES[static_cast<std::size_t>(place % FIGURE_COUNT)] *
         std::pow(10, place / FIGURE_COUNT);
}

double cPolarScale::getRingStep(int maxRings) const {
  for (double decade = 1;; decade *= 10) {
    for (const double figure : {1, 2, 5}) {
      if (getReach() / (figure * decade) <= std::max(maxRings, 1)) return figure * decade;
    }
  }
}

std::string metres(double millimetres) { return fmt::format("{:g} m", millimetres / 1000); }

}  // namespace tool
