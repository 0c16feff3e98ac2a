#pragma once

#include "sim/cSimFaults.h"
#include "sim/cSimRandom.h"
#include "sim/cSimRecord.h"

/// The content faults: the one place where a record's bytes are spoiled, after they were made and
/// before they leave. A new content fault is a function (bytes in, bytes out) and a row in its
/// table.
class cSimDamage {
 public:
  cSimDamage(cSimFaults& activeFaults, std::uint64_t seed) : faults(activeFaults), random(seed) {}

  /// Applies, in the order of eSimFault, those that are on and harm this record.
  void apply(cSimRecord& record);

 private:
  cSimFaults& faults;
  cSimRandom random;
};
