#pragma once

#include "tools/cli/cDevice.h"
#include "tools/cli/iCommand.h"

namespace tool {

/// `tarvolink info`: what a sensor tells of itself, as lines or as one JSON object.
class cInfoCommand : public iCommand {
 public:
  explicit cInfoCommand(CLI::App& app);

  void run(cShutdown& stop) override;

 private:
  cDeviceOptions options;
  bool json = false;
};

}  // namespace tool
