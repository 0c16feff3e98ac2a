#pragma once

#include <string>

#include "tools/cPolarScale.h"

namespace tool {

/// One scan as a polar drawing in SVG 1.1: the sensor in the middle looking up, the free space
/// that it sees, a circle for each reading, range rings in metres, angles in degrees.
class cSvgPlot {
 public:
  /// Draws `readings`, a scan of which only the points that are distances are left; all of them
  /// find room. `title` and `subtitle` may hold anything printable.
  cSvgPlot(const cScan& readings, const std::string& title, const std::string& subtitle);

  /// The whole document.
  const std::string& getText() const { return text; }

 private:
  void drawFreeSpace(const cScan& readings);
  void drawRings();
  void drawAngles();
  void drawReadings(const cScan& readings);
  void drawTexts(const std::string& title, const std::string& subtitle);
  cPosition onPaper(double distance, double angle) const;

  const cPolarScale scale;
  std::string text;
};

}  // namespace tool
