#ifndef TARVOLINK_TOOLS_CSCANCOMMAND_H
#define TARVOLINK_TOOLS_CSCANCOMMAND_H

#include <string>

#include "tools/cOutput.h"
#include "tools/cRateMeter.h"
#include "tools/cScanRun.h"
#include "tools/iCommand.h"
#include "tools/iScanFormat.h"

namespace tool {

/// `tarvolink scan`: takes scans and writes them as a table, CSV or JSON, and the last as a
/// drawing.
class cScanCommand : public iCommand {
 public:
  explicit cScanCommand(CLI::App& app);

  void run() override;

 private:
  boost::shared_ptr<cScan> take(cScanRun& scans, const iScanFormat& rows, cOutput& output,
                                cRateMeter& meter) const;
  void draw(const cScan& scan, const cScanRange& range, const cSensor& sensor) const;

  std::string device;
  int wanted = 1;  // 0: until stopped
  cScanWish wish;
  eScanFormat format = eScanFormat::TABLE;
  std::string file;
  std::string plot;  // "": none
};

}  // namespace tool

#endif
