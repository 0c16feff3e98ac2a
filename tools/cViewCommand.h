#pragma once

#include "tools/cDeviceName.h"
#include "tools/cOutput.h"
#include "tools/cScanRange.h"
#include "tools/iCommand.h"

namespace tool {

/// `tarvolink view`: a live polar picture in the terminal, or one that is printed.
class cViewCommand : public iCommand {
 public:
  explicit cViewCommand(CLI::App& app);

  void run(cShutdown& stop) override;

 private:
  void checkTerminal(const cOutput& output) const;

  cDeviceOptions where;
  cScanOptions options;
  bool isOnce = false;
};

}  // namespace tool
