#pragma once

#include "sim/cSimFaults.h"
#include "sim/cSimRandom.h"
#include "sim/cSimRecord.h"

/// The content faults: the one place where a record is corrupted, between its making and its
/// sending. A new content fault is a function (bytes in, bytes out) and a row in the table.
class cSimDamage {
 public:
  cSimDamage(cSimFaults& faults, std::uint64_t seed) : faults(faults), random(seed) {}

  /// Applies, in the order of eSimFault, those that are on and target this record.
  void apply(cSimRecord& record);

 private:
  cSimFaults& faults;
  cSimRandom random;
};
