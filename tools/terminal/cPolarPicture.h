#pragma once

#include <string>
#include <vector>

#include "tools/output/cPolarScale.h"
#include "tools/output/readings.h"
#include "tools/terminal/cBrailleCanvas.h"

namespace tool {

/// One scan as a polar picture in text: the sensor in the middle looking up, range rings with
/// labels, the limits of its view, and the readings. It knows no terminal.
class cPolarPicture {
 public:
  /// An empty picture; `scale` says what its shorter side covers.
  cPolarPicture(int columnCount, int rowCount, const cPolarScale& scale);

  /// Draws the readings of `scan`, then the grid. Once a picture.
  void draw(const tarvo::cLaserScan& scan);

  /// The rings alone, while there is no scan.
  void drawGrid();

  /// Readings that lay outside.
  int countOutside() const { return outside; }

  /// The distance between two rings, millimetres.
  double getRingStep() const { return scale.getRingStep(mostRings()); }

  /// The rows from the top, as `cBrailleCanvas::line` has them.
  std::vector<std::string> lines(const cPalette& palette) const;

 private:
  int mostRings() const;
  void drawReading(const cReading& reading);
  void drawRing(double distance);
  void drawRay(double angle);
  void labelRing(double distance);

  const int columns;
  const int rows;
  const cPolarScale scale;
  const int middleColumn;
  const int middleRow;
  const double middleX;  // dots: the middle of that cell
  const double middleY;
  const double dotsToEdge;
  const double dotsPerMillimetre;
  cBrailleCanvas canvas;
  double
      outermost;  // the distance that rings go up to: the reach, or the farthest reading in sight
  int outside = 0;
};

}  // namespace tool
