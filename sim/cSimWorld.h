#pragma once

#include <cstdint>
#include <vector>

#include "sim/cSimModel.h"

/// What the sensor looks at: a furnished room with a doorway to a long corridor and an open
/// window, a person who walks round in it, noise, and error values where nothing is hit within
/// range. The same model, rate, seed and scan number give the same distances. Constant after
/// construction, so any thread may ask.
class cSimWorld {
 public:
  cSimWorld(const cSimModel& sensorModel, double scanRate, std::uint32_t seed);

  /// The readings of the steps first..last in that scan, in groups of `cluster` (0 as 1): the
  /// smallest valid reading of each, or its smallest error value. Readings above `most` say it.
  /// Throws std::out_of_range unless 0 <= first <= last < steps per turn.
  std::vector<int> scan(std::uint32_t number, int first, int last, int cluster, int most) const;

 private:
  struct cRay {
    double x, y, range;
  };  ///< a step's direction and what it hits of the room
  struct cPerson {
    double x, y, radius;
  };

  cPerson personAt(std::uint32_t number) const;
  void seePerson(const cPerson& person, int first, std::vector<double>& ranges) const;
  int reading(double range, std::uint64_t noise) const;

  const cSimModel& model;
  double rate;
  std::uint64_t seed;
  std::vector<cRay> rays;
};
