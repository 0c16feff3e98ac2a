#pragma once

#include <string>

namespace tool {

/// A point of a drawing with the sensor at its origin, looking up: millimetres.
struct cPosition {
  double right;
  double up;
};

/// Where a distance lies at an angle (radians, anti-clockwise from the front).
cPosition positionAt(double distance, double angle);

/// How far a polar drawing reaches and where its range rings lie: round figures only, so that
/// the rings read well at every zoom. A plain value.
class cPolarScale {
 public:
  /// The smallest scale that covers `millimetres`, or the largest of all.
  static cPolarScale covering(double millimetres);

  /// The distance at the drawing's edge, millimetres: from 100 mm to 100 m.
  double getReach() const;

  /// The distance between two rings, millimetres, with at most `maxRings` (at least 1).
  double getRingStep(int maxRings) const;

  /// One scale closer in, or farther out; at the end of the row the same.
  cPolarScale zoomIn() const { return cPolarScale(place - 1); }
  cPolarScale zoomOut() const { return cPolarScale(place + 1); }

 private:
  explicit cPolarScale(int wanted);

  int place;  // in the row of round figures
};

/// A distance as a label has it, in metres: "0.5 m", "2 m".
std::string metres(double millimetres);

}  // namespace tool
