#pragma once

#include <atomic>
#include <cstdint>
#include <ostream>

/// What became of the scans that all sensors sent. Any thread.
struct cTally {
  /// Some scans were delivered, each as measured, none was lost without a fault, and every scanner
  /// came back.
  bool passed() const { return wrong == 0 && unexplained == 0 && stuck == 0 && delivered > 0; }

  std::atomic<std::uint64_t> delivered{0};
  std::atomic<std::uint64_t> wrong{0};        ///< delivered, but not what was measured
  std::atomic<std::uint64_t> flagged{0};      ///< delivered with another number of points
  std::atomic<std::uint64_t> lost{0};         ///< while a fault was on
  std::atomic<std::uint64_t> unexplained{0};  ///< lost while none was
  std::atomic<std::uint64_t> stuck{0};        ///< scanners that did not come back from a fault
};

inline std::ostream& operator<<(std::ostream& out, const cTally& tally) {
  return out << tally.delivered << " delivered, " << tally.lost << " lost to faults, "
             << tally.unexplained << " lost without a fault, " << tally.wrong << " wrong, "
             << tally.flagged << " flagged by their size, " << tally.stuck << " times stuck";
}
