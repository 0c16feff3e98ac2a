#pragma once

#include <CLI/CLI.hpp>
#include <map>
#include <string>
#include <vector>

#include "sim/tarvosim.h"

namespace tool {

/// The names of the simulated models and dialects on a command line.
const std::map<std::string, eSimModel>& simModels();
const std::map<std::string, eSimDialect>& simDialects();

/// The faults that a simulated sensor is to have from the start. A plain value.
struct cSimFaults {
  struct cFault {
    eSimFault fault;
    int value;
  };
  std::vector<cFault> faults;
  std::string only;  ///< as `cSimSensor::setFault` has it

  void apply(cSimSensor& sensor) const {
    for (const cFault& each : faults) sensor.setFault(each.fault, each.value, only);
  }
};

/// Declares `--fault` and `--only`. Their help says `where` they hold.
void addFaultOptions(CLI::App& command, cSimFaults& faults, const std::string& where);

/// The faults there are, for a command's help.
std::string knownFaults();

}  // namespace tool
