#pragma once

#include "sim/tarvosim.h"
#include "tools/cli/iCommand.h"
#include "tools/cli/simOptions.h"

namespace tool {

/// `tarvolink sim`: one simulated sensor on a pseudo-terminal until a signal comes; prints its
/// path.
class cSimCommand : public iCommand {
 public:
  explicit cSimCommand(CLI::App& app);

  void run(cShutdown& stop) override;

 private:
  cSimSetting setting;
  cSimFaults faults;
  bool isVerbose = false;
};

}  // namespace tool
