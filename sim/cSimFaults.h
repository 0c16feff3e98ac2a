#pragma once

#include <array>
#include <mutex>
#include <optional>
#include <string>

#include "sim/cSimRecord.h"
#include "sim/eSimFault.h"

/// The faults that are on. Any thread may set and clear; the worker asks.
class cSimFaults {
 public:
  void set(eSimFault fault, int value, const std::string& only, int times);
  void clear(eSimFault fault);
  void clearAll();

  /// The fault's value if it is on, whatever it harms.
  std::optional<int> valueOf(eSimFault fault) const;
  /// The fault's value if it is on and harms this record, which then counts as harmed.
  std::optional<int> take(eSimFault fault, const cSimRecord& record);

 private:
  struct cEntry {
    int value;
    std::string only;
    int left;  ///< records still to be harmed; 0: no limit
  };
  static constexpr std::size_t COUNT = static_cast<std::size_t>(eSimFault::UNPLUGGED) + 1;
  static std::size_t placeOf(eSimFault fault) { return static_cast<std::size_t>(fault); }

  mutable std::mutex mutex;
  std::array<std::optional<cEntry>, COUNT> entries;
};
