#pragma once

#include "tools/cli/cDevice.h"
#include "tools/cli/iCommand.h"

namespace tool {

/// `tarvolink stop`: ends what an earlier program has left running on a sensor, laser off.
class cStopCommand : public iCommand {
 public:
  explicit cStopCommand(CLI::App& app);

  void run(cShutdown& stop) override;

 private:
  cDeviceOptions options;
};

}  // namespace tool
