#include "tools/cli/cScanRun.h"

#include <fmt/format.h>

#include <algorithm>

#include "tools/base/cFailure.h"
#include "tools/base/messages.h"
#include "tools/base/printable.h"
#include "tools/cli/summary.h"
#include "tools/output/cAtomicFile.h"
#include "tools/output/cSvgPlot.h"
#include "tools/output/readings.h"
#include "tools/output/timestamp.h"

namespace tool {

namespace {

constexpr std::chrono::milliseconds WAIT{100};  // how soon a closed reader is noticed
constexpr std::chrono::milliseconds PROGRESS_PAUSE{200};

std::size_t countOf(const cScanRunOptions& options) {
  return static_cast<std::size_t>(options.count.value_or(options.range.seconds ? 0 : 1));
}

/// Made before the output for scans, where that is another: each takes what is standard output
/// then.
std::unique_ptr<cOutput> openPlot(const cScanRunOptions& options, cShutdown& stop) {
  if (!options.isPlotShown || options.format == eScanFormat::NONE) return nullptr;
  return std::make_unique<cOutput>("", stop);
}

ePatience patienceOf(const cScanRunOptions& options) {
  if (options.device.isWaiting) {
    return options.isReconnecting ? ePatience::BOTH : ePatience::WAIT;
  }
  return options.isReconnecting ? ePatience::RECONNECT : ePatience::NONE;
}

}  // namespace

cScanRun::cScanRun(const cScanRunOptions& options, const cDevice& device, cShutdown& stop)
    : options(options),
      count(countOf(options)),
      device(device),
      stop(stop),
      plotOutput(openPlot(options, stop)),
      output(options.file, stop) {
  for (const std::string& path : device.getPaths()) output.refuseDevice(path);
}

void cScanRun::run() {
  device.announce();
  cScanFeed feed(device, options.range, patienceOf(options), stop);
  try {
    takeAll(feed);
  } catch (const cFailure&) {
    finish(true);
    throw;
  }
  finish(false);
  if (options.isStrict) checkStrictly();
}

void cScanRun::takeAll(cScanFeed& feed) {
  while (!hasAll() && !stop.isRequested()) {
    const auto scan = feed.next(WAIT);
    if (feed.isStarted() && !isBegun) begin(feed);
    if (scan) deliver(feed, scan);
    counted = feed.getHealth();
    isAhead = feed.hasBacklog();
    if (!hasAll()) watchReaders();
    showProgress();
  }
}

void cScanRun::begin(const cScanFeed& feed) {
  isBegun = true;
  const std::string name = device.getName(feed.getHealth().sensor->device);
  rows = makeScanFormat(options.format, name, options.columns);
  output.write(rows->header());
  if (count == 0) stop.expectRequest();
  if (options.range.seconds) stop.limitTime(*options.range.seconds);
}

void cScanRun::deliver(const cScanFeed& feed, const tarvo::tScanPtr& scan) {
  last = scan;
  lastNumber = feed.getNumber(*scan);
  meter.count();
  output.write(rows->rows(lastNumber, *scan, meter.getRate()));
}

/// One who leaves once the last scan is written has got all.
void cScanRun::watchReaders() {
  if (output.isReaderGone() || (plotOutput && plotOutput->isReaderGone())) stop.requestByReader();
}

void cScanRun::showProgress() {
  const auto now = std::chrono::steady_clock::now();
  if (now < nextProgress) return;
  nextProgress = now + PROGRESS_PAUSE;
  warn();
  const bool isScrolling = output.isTerminal() && options.format != eScanFormat::NONE;
  if (isBegun && isScrolling) return progress.clear();
  const std::chrono::duration<double> passed = now - start;
  progress.show(isBegun ? getSummary(meter, counted)
                        : fmt::format("looking: {:.0f} s", passed.count()));
}

/// Once, when it begins.
void cScanRun::warn() {
  if (hasWarned || counted.damaged + counted.lost + counted.dropped == 0) return;
  hasWarned = true;
  printNote(
      fmt::format("scans are missing ({} damaged, {} lost, {} dropped so far): their numbers "
                  "leave gaps. Look at the cable, at the line's speed, and at who reads the "
                  "output.",
                  counted.damaged, counted.lost, counted.dropped));
}

bool cScanRun::hasAll() const { return count != 0 && meter.getTotal() >= count; }

void cScanRun::finish(bool isFailed) {
  progress.clear();
  const bool isWhole = !isFailed && (hasAll() || !stop.isCutShort());
  if (!last) {
    output.discard();  // an older file is better than none
  } else if (isWhole) {
    output.finish();
    draw();
  } else {
    output.keepTemporary();
  }
  if (!isBegun) return;
  warn();
  printSummary(meter, counted);
  const std::string part = output.getTemporary();
  if (last && !isWhole && !part.empty())
    printNote("the scans taken until then are in " + oneLine(part));
}

/// The sensor's counts may be ahead of a slow reader of the output: then the gaps in its numbers
/// alone are what it misses.
void cScanRun::checkStrictly() const {
  const std::uint64_t gaps = lastNumber - meter.getTotal();
  const std::uint64_t missing =
      isAhead ? gaps : std::max(counted.damaged + counted.lost + counted.dropped, gaps);
  if (missing == 0) return;
  throw cFailure(eExit::SCANS_STOPPED,
                 fmt::format("{} missing, which --strict forbids.",
                             missing == 1 ? "1 scan is" : fmt::format("{} scans are", missing)));
}

void cScanRun::draw() {
  if (options.plot.empty()) return;
  const std::string subtitle = fmt::format(
      "{} on {}, {} of {} readings valid", isoTimestamp(last->arrivalUtc),
      device.getName(last->sensor->device), readingsOf(*last).size(), last->distances.size());
  const cSvgPlot drawing(*last, sanitized(last->sensor->product), sanitized(subtitle));
  if (!options.isPlotShown) return writeAtomically(options.plot, drawing.getText());
  (plotOutput ? *plotOutput : output).write(drawing.getText());
}

}  // namespace tool
