#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "bench/cChild.h"
#include "sim/tarvosim.h"

/// Simulated sensors in a process of their own, from construction to destruction.
class cSimHost {
 public:
  /// What they have counted together since they were made.
  struct cTotals {
    std::uint64_t scans = 0;         ///< completely written
    std::uint64_t skippedScans = 0;  ///< not written, because the reader was too slow
    std::uint64_t bytes = 0;         ///< in both directions
  };

  /// Makes `count` sensors with `setting` and its seed counted up. Throws std::runtime_error when
  /// they cannot be made.
  cSimHost(const cSimSetting& setting, int count);

  /// Their ptys.
  const std::vector<std::string>& getPaths() const { return paths; }
  cTotals getTotals();

 private:
  cChild child;
  std::vector<std::string> paths;
};
