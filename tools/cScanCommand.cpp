#include "tools/cScanCommand.h"

#include <fmt/format.h>

#include "tools/cFailure.h"
#include "tools/notice.h"

namespace tool {

namespace {

/// Says at its end how a run went, also when that end is an error.
class cSummary {
 public:
  cSummary(const cRateMeter& rates, const cScanRun& run) : meter(rates), scans(run) {}
  cSummary(const cSummary&) = delete;
  cSummary& operator=(const cSummary&) = delete;
  ~cSummary() {
    notice(fmt::format("{} scans, {:.2f} a second, {} dropped", meter.getTotal(),
                       meter.getMeanRate(), scans.getDropped()));
  }

 private:
  const cRateMeter& meter;
  const cScanRun& scans;
};

}  // namespace

cScanCommand::cScanCommand(CLI::App& app) : iCommand(app.add_subcommand("scan", "Take scans")) {
  declaration->add_option("DEVICE", device,
                          "A tty, or sim:[short|middle|long] for a simulated sensor (the default)");
  declaration->add_option("-n", wanted, "How many scans (default: 1); 0: until Ctrl-C");
  declaration->add_option("--first", wish.first, "First step (default: the sensor's)");
  declaration->add_option("--last", wish.last, "Last step (default: the sensor's)");
  declaration->add_option("--cluster", wish.cluster, "Steps that make one point (default: 1)");
  declaration->add_option("--interval", wish.interval,
                          "Turns to skip after each scan, 0 to 9 (default: 0)");
  declaration->add_option("--max-distance", wish.maxDistance,
                          "Longest distance that matters, mm; up to 4095 needs fewer bytes "
                          "(default: the sensor's)");
  declaration->add_option("--format", format, "table (the default), csv or json")
      ->transform(CLI::CheckedTransformer(scanFormats()).description("NAME"));
  declaration->add_option("-o", file, "Write the scans to FILE instead of standard output");
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
  const cDeviceName name(device);
  cStop stop;
  cOutput output(file, stop);
  const cSensor sensor(name, stop);
  const cScanRange range(wish, sensor.info());
  const auto rows = makeScanFormat(format, range);
  cScanRun scans(sensor, range, stop);
  cRateMeter meter;
  const cSummary summary(meter, scans);
  take(scans, *rows, output, meter);
}

void cScanCommand::take(cScanRun& scans, const iScanFormat& rows, cOutput& output,
                        cRateMeter& meter) const {
  const auto count = static_cast<std::size_t>(wanted);
  output.write(rows.header());
  while ((count == 0 || meter.getTotal() < count) && !output.isOver()) {
    const auto scan = scans.next();
    if (!scan) return;
    meter.count();
    output.write(rows.rows(meter.getTotal(), *scan, meter.getRate()));
  }
}

}  // namespace tool
