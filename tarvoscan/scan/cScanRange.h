#pragma once

#include <cstddef>
#include <string>

namespace tarvo {

/// What a scan covers on one sensor, as its commands have it. A plain value.
struct cScanRange {
  int firstStep = 0;
  int lastStep = 0;
  int cluster = 1;       ///< steps of one point, 1 to 99
  int skippedTurns = 0;  ///< between two scans, 0 to 9
  int maxDistance = 0;   ///< millimetres
  int width = 0;         ///< characters of a distance on the wire
  bool isScip2 = true;

  /// Points of a scan; a partial last cluster counts as one.
  std::size_t getPoints() const;

  /// The command for one scan after the other ("MD", "MS"), or for one scan ("G"). In SCIP 1.x two
  /// requests that follow each other differ where single steps are asked for, so that a late answer
  /// to the one before is noticed: a cluster of 0 asks for the same as 1.
  std::string getCommand(bool isOdd) const;
};

}  // namespace tarvo
