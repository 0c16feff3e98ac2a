#include "tools/cli/cScanCommand.h"

#include <fmt/format.h>

#include <filesystem>
#include <system_error>

#include "tools/base/cFailure.h"
#include "tools/base/printable.h"
#include "tools/cli/deviceOptions.h"
#include "tools/cli/number.h"
#include "tools/cli/oneOf.h"
#include "tools/cli/rangeOptions.h"
#include "tools/output/cAtomicFile.h"

namespace tool {

namespace {

constexpr auto STANDARD_OUTPUT = "-";

/// Without symbolic links, as far as they can be read.
std::filesystem::path resolved(const std::string& path) {
  std::error_code error;
  const auto whole = std::filesystem::absolute(path, error);
  const auto canonical = std::filesystem::weakly_canonical(whole, error);
  return error ? whole.lexically_normal() : canonical;
}

}  // namespace

cScanCommand::cScanCommand(CLI::App& app) : iCommand(app.add_subcommand("scan", "Take scans")) {
  const auto fileCheck = notEmpty("name a file, or leave the option out");
  addDeviceOptions(*declaration, options.device);
  requireNumber<int>(declaration->add_option(
      "-n", options.count,
      "How many scans (default: 1; no limit with --duration); 0: until Ctrl-C"));
  addRangeOptions(*declaration, options.range);
  declaration->add_option("--format", options.format, "table (the default), csv or json")
      ->transform(oneOf(scanFormats()));
  declaration->add_flag("--json", isJson, "Short for --format json");
  declaration->add_flag("--origin", options.columns.hasOrigin,
                        "With csv: columns device, product and serial, where a scan comes from");
  declaration->add_flag("--xy", options.columns.hasPosition,
                        "With csv: columns x_mm (ahead) and y_mm (left), empty where the reading "
                        "is no distance");
  declaration
      ->add_option("-o", options.file,
                   "Write the scans to FILE instead of standard output; -: standard output")
      ->type_name("FILE")
      ->check(fileCheck);
  declaration
      ->add_option("--plot", options.plot,
                   "Draw the last scan to FILE, as SVG; -: standard output, without a table there")
      ->type_name("FILE")
      ->check(fileCheck);
  declaration->add_flag("--reconnect", options.isReconnecting,
                        "When scans stop coming, wait for the device to come back and go on");
  declaration->add_flag("--strict", options.isStrict,
                        "End with status 4 where a scan was damaged, lost or dropped");
  declaration->callback([this] { checkCombination(); });
}

void cScanCommand::checkCombination() {
  const bool hasFormat = declaration->count("--format") > 0;
  if (isJson && hasFormat && options.format != eScanFormat::JSON) {
    throw CLI::ValidationError("--json and another --format than json contradict each other");
  }
  if (isJson) options.format = eScanFormat::JSON;
  for (const char* column : {"--origin", "--xy"}) {
    if (declaration->count(column) == 0 || options.format == eScanFormat::CSV) continue;
    throw CLI::ValidationError(std::string(column) + " needs --format csv");
  }
  isFormatChosen = hasFormat || isJson;
}

void cScanCommand::run(cShutdown& stop) {
  if (options.count.value_or(0) < 0) {
    throw cFailure(
        eExit::BAD_INPUT,
        fmt::format("-n {} is not possible: give how many scans, or 0 to take them until "
                    "Ctrl-C.",
                    *options.count));
  }
  options.range.check();
  if (options.file == STANDARD_OUTPUT) options.file = "";
  checkPlot();
  const cDevice device(options.device);
  cScanRun(options, device, stop).run();
}

void cScanCommand::checkPlot() {
  if (options.plot.empty()) return;
  options.isPlotShown = options.plot == STANDARD_OUTPUT;
  const bool isDataAsked = declaration->count("-o") > 0 || isFormatChosen;
  if (options.isPlotShown && !isDataAsked) options.format = eScanFormat::NONE;
  const std::string data = options.file.empty() ? "/dev/stdout" : options.file;
  const std::string plot = options.isPlotShown ? "/dev/stdout" : options.plot;
  if (options.format != eScanFormat::NONE && resolved(data) == resolved(plot)) {
    throw cFailure(eExit::BAD_INPUT,
                   fmt::format("the scans (-o) and the drawing (--plot) are both to go to {}: one "
                               "would spoil the other. Give two files.",
                               options.isPlotShown ? "standard output" : oneLine(options.plot)));
  }
  if (!options.isPlotShown) checkWritable(options.plot);
}

}  // namespace tool
