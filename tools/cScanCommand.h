#pragma once

#include <string>

#include "tools/cScanJob.h"
#include "tools/iCommand.h"

namespace tool {

/// `tarvolink scan`: takes scans and writes them as a table, CSV or JSON, and the last as a
/// drawing.
class cScanCommand : public iCommand {
 public:
  explicit cScanCommand(CLI::App& app);

  void run() override;

 private:
  void checkPlot() const;

  cScanOrder order;
};

}  // namespace tool
