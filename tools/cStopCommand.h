#pragma once

#include "tools/cDeviceName.h"
#include "tools/iCommand.h"

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
