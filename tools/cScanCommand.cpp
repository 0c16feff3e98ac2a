#include "tools/cScanCommand.h"

#include <fmt/format.h>

#include <filesystem>

#include "tools/cFailure.h"
#include "tools/deviceOptions.h"
#include "tools/oneOf.h"
#include "tools/rangeOptions.h"
#include "tools/replaceFile.h"

namespace tool {

cScanCommand::cScanCommand(CLI::App& app) : iCommand(app.add_subcommand("scan", "Take scans")) {
  addDeviceOptions(*declaration, order.device);
  declaration->add_option("-n", order.wanted, "How many scans (default: 1); 0: until Ctrl-C");
  addRangeOptions(*declaration, order.range);
  declaration->add_option("--format", order.format, "table (the default), csv or json")
      ->transform(oneOf(scanFormats()));
  declaration->add_option("-o", order.file, "Write the scans to FILE instead of standard output")
      ->type_name("FILE");
  declaration->add_option("--plot", order.plot, "Draw the last scan to FILE, as SVG")
      ->type_name("FILE");
  declaration->add_flag("--reconnect", order.isReconnecting,
                        "When scans stop coming, wait for the device to come back and go on");
}

void cScanCommand::run() {
  if (order.wanted < 0) {
    throw cFailure(
        eExit::BAD_INPUT,
        fmt::format("-n {} is not possible: give how many scans, or 0 to take them until "
                    "Ctrl-C.",
                    order.wanted));
  }
  order.range.check();
  if (!order.plot.empty()) checkPlot();
  const cDeviceName name(order.device);
  cStop stop;
  cScanJob(order, name, stop).run();
}

void cScanCommand::checkPlot() const {
  using cPath = std::filesystem::path;
  if (cPath(order.plot).lexically_normal() == cPath(order.file).lexically_normal()) {
    throw cFailure(eExit::BAD_INPUT,
                   fmt::format("-o and --plot are both {}: the drawing would replace the scans. "
                               "Give two files.",
                               order.plot));
  }
  checkReplaceable(order.plot);
}

}  // namespace tool
