#pragma once

#include <string>

#include "tools/cli/cScanRun.h"
#include "tools/cli/iCommand.h"

namespace tool {

/// `tarvolink scan`: takes scans and writes them as a table, CSV or JSON, and the last as a
/// drawing.
class cScanCommand : public iCommand {
 public:
  explicit cScanCommand(CLI::App& app);

  void run(cShutdown& stop) override;

 private:
  void checkCombination();
  void checkPlot();

  cScanRunOptions options;
  bool isJson = false;
  bool isFormatChosen = false;
};

}  // namespace tool
