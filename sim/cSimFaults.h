#pragma once

#include <array>
#include <mutex>
#include <optional>
#include <string>

#include "sim/cSimRecord.h"
#include "sim/eSimFault.h"

/// The faults that are on. Any thread.
class cSimFaults {
 public:
  /// As cSimSensor::setFault.
  void set(eSimFault fault, int value, const std::string& target, int times);
  void clear(eSimFault fault);
  void clearAll();

  /// The fault's value if it is on, whatever its target.
  std::optional<int> valueOf(eSimFault fault) const;
  /// The fault's value if it is on and this record is its target; uses up one of its `times`.
  std::optional<int> consume(eSimFault fault, const cSimRecord& record);

 private:
  struct cEntry {
    int value;
    std::string target;
    int remaining;  ///< records still to be affected; 0: no limit
  };
  static constexpr std::size_t COUNT = static_cast<std::size_t>(eSimFault::UNPLUGGED) + 1;
  static std::size_t indexOf(eSimFault fault) { return static_cast<std::size_t>(fault); }

  mutable std::mutex mutex;
  std::array<std::optional<cEntry>, COUNT> entries;
};
