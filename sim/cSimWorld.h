#pragma once

#include <cstdint>
#include <vector>

#include "sim/cSimModel.h"

/// What the sensor looks at: a furnished room with a doorway to a long corridor and an open
/// window, and a person walking around in it; with noise, and error values where nothing is in
/// range. The same model, rate, seed and scan number give the same distances. Constant after
/// construction: any thread.
class cSimWorld {
 public:
  cSimWorld(const cSimModel& model, double rate, std::uint32_t seed);

  /// The readings of the steps first..last in that scan, in groups of `cluster` steps (0 counts as
  /// 1): the smallest valid reading of each group, or its smallest error value. Readings above
  /// `maxReading` are reported as `maxReading`. Throws std::out_of_range unless 0 <= first <= last
  /// < steps per turn.
  std::vector<int> scan(std::uint32_t number, int first, int last, int cluster,
                        int maxReading) const;

 private:
  /// A step's direction (of length 1), and how far the room is there.
  struct cRay {
    double x, y, range;
  };
  struct cPerson {
    double x, y, radius;
  };

  cPerson personAt(std::uint32_t number) const;
  void addPerson(const cPerson& person, int first, std::vector<double>& ranges) const;
  int reading(double range, std::uint64_t readingSeed) const;

  const cSimModel& model;
  double rate;
  std::uint64_t seed;
  std::vector<cRay> rays;
};
