#include "tools/cScanCommand.h"

#include <fmt/format.h>

#include "tools/cFailure.h"
#include "tools/cSummary.h"
#include "tools/cSvgPlot.h"
#include "tools/printable.h"
#include "tools/rangeOptions.h"
#include "tools/replaceFile.h"
#include "tools/timestamp.h"

namespace tool {

cScanCommand::cScanCommand(CLI::App& app) : iCommand(app.add_subcommand("scan", "Take scans")) {
  declaration->add_option("DEVICE", device,
                          "A tty, or sim:[short|middle|long] for a simulated sensor (the default)");
  declaration->add_option("-n", wanted, "How many scans (default: 1); 0: until Ctrl-C");
  addRangeOptions(*declaration, wish);
  declaration->add_option("--format", format, "table (the default), csv or json")
      ->transform(CLI::CheckedTransformer(scanFormats()).description("NAME"));
  declaration->add_option("-o", file, "Write the scans to FILE instead of standard output");
  declaration->add_option("--plot", plot, "Draw the last scan to FILE, as SVG");
}

void cScanCommand::run() {
  if (wanted < 0) {
    throw cFailure(
        eExit::BAD_INPUT,
        fmt::format("-n {} is not possible: give how many scans, or 0 to take them until "
                    "Ctrl-C.",
                    wanted));
  }
  wish.check();
  if (!plot.empty()) checkReplaceable(plot);
  const cDeviceName name(device);
  cStop stop;
  cOutput output(file, stop);
  const cSensor sensor(name, stop);
  const cScanRange range(wish, sensor.info());
  const auto rows = makeScanFormat(format, range);
  cScanRun scans(sensor, range, stop);
  cRateMeter meter;
  const cSummary summary(meter, scans);
  const auto last = take(scans, *rows, output, meter);
  if (last && !plot.empty()) draw(*last, range, sensor);
}

/// Takes the scans; the last of them, empty when none came.
boost::shared_ptr<cScan> cScanCommand::take(cScanRun& scans, const iScanFormat& rows,
                                            cOutput& output, cRateMeter& meter) const {
  const auto count = static_cast<std::size_t>(wanted);
  output.write(rows.header());
  boost::shared_ptr<cScan> last;
  while ((count == 0 || meter.getTotal() < count) && !output.isOver()) {
    const auto scan = scans.next();
    if (!scan) return last;
    last = scan;
    meter.count();
    output.write(rows.rows(meter.getTotal(), *scan, meter.getRate()));
  }
  return last;
}

void cScanCommand::draw(const cScan& scan, const cScanRange& range, const cSensor& sensor) const {
  const cScan readings = range.readingsOf(scan);
  const std::string subtitle =
      fmt::format("{} on {}, {} of {} readings valid", isoTimestamp(scan.timeStamp.time),
                  cDeviceName(device).getText(), readings.points.size(), scan.points.size());
  const cSvgPlot drawing(readings, printable(sensor.info().getProd()), printable(subtitle));
  replaceFile(plot, drawing.getText());
}

}  // namespace tool
