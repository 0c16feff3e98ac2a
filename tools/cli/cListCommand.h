#pragma once

#include "tools/cli/iCommand.h"

namespace tool {

/// `tarvolink list`: the serial devices of this machine, as lines or as one JSON array.
class cListCommand : public iCommand {
 public:
  explicit cListCommand(CLI::App& app);

  void run(cShutdown& stop) override;

 private:
  bool json = false;
  bool isProbing = false;
};

}  // namespace tool
