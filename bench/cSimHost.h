#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "bench/cChild.h"
#include "sim/tarvosim.h"

/// Simulated sensors in a child process, from construction to destruction.
class cSimHost {
 public:
  /// The sum of what they have counted since construction.
  struct cTotals {
    std::uint64_t scans = 0;         ///< completely written
    std::uint64_t skippedScans = 0;  ///< not written: the reader was too slow
    std::uint64_t bytes = 0;         ///< in both directions
  };

  /// Starts `count` sensors with `setting`, each with the next seed. Throws std::runtime_error when
  /// that fails.
  cSimHost(const cSimSetting& setting, int count);

  /// The paths of their ptys.
  const std::vector<std::string>& getPaths() const { return paths; }
  cTotals getTotals();

 private:
  cChild child;
  std::vector<std::string> paths;
};
