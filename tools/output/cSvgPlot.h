#pragma once

#include <string>

#include "tools/output/cPolarScale.h"
#include "tools/output/readings.h"

namespace tool {

/// One scan as a polar drawing in SVG 1.1: the sensor in the middle looking up, the free space
/// that it sees, a circle for each reading, range rings in metres, angles in degrees.
class cSvgPlot {
 public:
  /// Draws the readings of `scan`; all of them find room. `title` and `subtitle` may hold anything
  /// printable.
  cSvgPlot(const tarvo::cLaserScan& scan, const std::string& title, const std::string& subtitle);

  /// The whole document.
  const std::string& getText() const { return text; }

 private:
  void drawFreeSpace();
  void drawRings();
  void drawAngles();
  void drawReadings();
  void drawTexts(const std::string& title, const std::string& subtitle);
  cPosition onPaper(double distance, double angle) const;

  const std::vector<cReading> readings;
  const double angleStep;
  const cPolarScale scale;
  std::string text;
};

}  // namespace tool
