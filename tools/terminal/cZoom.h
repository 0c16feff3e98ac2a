#pragma once

#include "tarvoscan/tarvoscan.h"
#include "tools/output/cPolarScale.h"

namespace tool {

/// The scale of a live picture: follows the readings until the user chooses one.
class cZoom {
 public:
  /// Reaches `millimetres` until the first scan comes.
  explicit cZoom(double millimetres) : scale(cPolarScale::covering(millimetres)) {}

  /// Fits the scale to a scan's readings, unless the user has zoomed. Nineteen in twenty lie
  /// within: outliers (a view through a door) do not shrink the picture. It grows at once and
  /// shrinks only with something to spare, so that it does not flicker.
  void follow(const tarvo::cLaserScan& scan);

  void zoomIn() { choose(scale.zoomIn()); }
  void zoomOut() { choose(scale.zoomOut()); }
  void fit() { isFitting = true; }

  const cPolarScale& getScale() const { return scale; }

 private:
  void choose(const cPolarScale& chosen) {
    scale = chosen;
    isFitting = false;
  }

  cPolarScale scale;
  bool isFitting = true;
};

}  // namespace tool
