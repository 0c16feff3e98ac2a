#pragma once

#include "tools/cPolarScale.h"

namespace tool {

/// The scale of a live picture: follows the readings until the user chooses one.
class cZoom {
 public:
  /// Reaches `millimetres` until the first scan comes.
  explicit cZoom(double millimetres) : scale(cPolarScale::reaching(millimetres)) {}

  /// Fits the scale to a scan's readings, unless the user has zoomed. Nineteen in twenty lie
  /// within: a far end seen through a door does not make the room small. It grows at once and
  /// shrinks only with something to spare, so that it does not flicker.
  void follow(const cScan& readings);

  void closer() { choose(scale.closer()); }
  void farther() { choose(scale.farther()); }
  void fit() { isFitting = true; }

  const cPolarScale& getScale() const { return scale; }

 private:
  void choose(const cPolarScale& wanted) {
    scale = wanted;
    isFitting = false;
  }

  cPolarScale scale;
  bool isFitting = true;
};

}  // namespace tool
