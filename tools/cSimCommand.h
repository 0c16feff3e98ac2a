#pragma once

#include <string>
#include <vector>

#include "sim/tarvosim.h"
#include "tools/iCommand.h"

namespace tool {

/// `tarvolink sim`: one simulated sensor on a pseudo-terminal until a signal comes; prints its
/// path.
class cSimCommand : public iCommand {
 public:
  explicit cSimCommand(CLI::App& app);

  void run(cShutdown& stop) override;

 private:
  void addFaults(const std::vector<std::string>& words);

  struct cFault {
    eSimFault fault;
    int value;
  };

  cSimSetting setting;
  std::vector<cFault> faults;
  std::string only;  // as cSimSensor::setFault
  bool isVerbose = false;
};

}  // namespace tool
