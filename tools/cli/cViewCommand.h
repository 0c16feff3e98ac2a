#pragma once

#include "tools/cli/cScanFeed.h"
#include "tools/cli/iCommand.h"
#include "tools/output/cOutput.h"

namespace tool {

/// `tarvolink view`: a live polar picture in the terminal, or one that is printed.
class cViewCommand : public iCommand {
 public:
  explicit cViewCommand(CLI::App& app);

  void run(cShutdown& stop) override;

 private:
  void checkTerminal(const cOutput& output) const;
  ePatience getPatience() const;

  cDeviceOptions where;
  cScanOptions options;
  bool isOnce = false;
};

}  // namespace tool
