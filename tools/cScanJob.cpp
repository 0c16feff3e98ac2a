#include "tools/cScanJob.h"

#include <fmt/format.h>

#include "tools/cAbortGuard.h"
#include "tools/cSensor.h"
#include "tools/cSvgPlot.h"
#include "tools/printMessage.h"
#include "tools/printable.h"
#include "tools/timestamp.h"
#include "tools/writeAtomically.h"

namespace tool {

namespace {

constexpr std::chrono::milliseconds WAIT{100};  // how soon an end is noticed while no scan comes
constexpr std::chrono::milliseconds RETRY_PAUSE{200};  // between two looks for a lost device
constexpr std::chrono::milliseconds PROGRESS_PAUSE{200};

std::size_t countOf(const cScanJobOptions& options) {
  return static_cast<std::size_t>(options.count.value_or(options.range.seconds ? 0 : 1));
}

/// Made before the output for scans, where that is another: each takes what is standard output
/// then.
std::unique_ptr<cOutput> openPlot(const cScanJobOptions& options, cShutdown& stop) {
  if (!options.isPlotShown || options.format == eScanFormat::NONE) return nullptr;
  return std::make_unique<cOutput>("", stop);
}

}  // namespace

cScanJob::cScanJob(const cScanJobOptions& options, const cDeviceName& device, cShutdown& stop)
    : options(options),
      count(countOf(options)),
      name(device),
      stop(stop),
      plotOutput(openPlot(options, stop)),
      output(options.file, stop) {
  reader.emplace(output, stop);
  if (plotOutput) plotReader.emplace(*plotOutput, stop);
}

void cScanJob::run() {
  output.refuseDevice(name.getText());
  const cShutdown::cExitHook exitHook(stop, [this] { finishOnExit(); });
  try {
    takeAll();
  } catch (const cFailure&) {
    finish(true);
    throw;
  }
  finish(false);
}

void cScanJob::takeAll() {
  while (!isDone()) {
    try {
      takeFrom(cSensor(name, stop));
    } catch (cTransientError& error) {
      if (!options.isReconnecting || !tally.isStarted) throw;
      waitFor(error);
    }
  }
}

void cScanJob::waitFor(cTransientError& error) {
  progress.clear();
  if (lastReported != error.what()) {
    error.report();
    printMessage(fmt::format("waiting for {} to come back (--reconnect)", oneLine(name.getText())));
  }
  lastReported = error.what();
  stop.waitFor(RETRY_PAUSE);
}

void cScanJob::takeFrom(const cSensor& sensor) {
  {
    const std::lock_guard<std::mutex> lock(finishing);
    lastRange.emplace(options.range, sensor);
    product = sensor.info().getProd();
  }
  const cOrigin origin{name.getText(), sensor.info().getProd(), sensor.info().getSerial()};
  const auto rows = makeScanFormat(options.format, *lastRange, origin, options.columns);
  if (!tally.isStarted) output.write(rows->header());
  const bool isReconnect = tally.isStarted;
  cAbortGuard::setLastWords(getLastWords());
  cScanRun scans(sensor, *lastRange, stop, tally);
  if (isReconnect) {
    ++tally.reconnects;
  } else {
    begin();
  }
  lastReported.clear();
  try {
    takeFrom(scans, *rows);
  } catch (cTransientError& error) {
    progress.clear();
    error.report();  // now, since to stop a sensor that is silent takes its time
    throw;
  }
}

void cScanJob::begin() {
  if (count == 0) stop.expectRequest();
  if (options.range.seconds) stop.limitTime(*options.range.seconds);
}

void cScanJob::takeFrom(cScanRun& scans, const iScanFormat& rows) {
  const bool isScrolling = output.isTerminal() && options.format != eScanFormat::NONE;
  auto nextProgress = std::chrono::steady_clock::now() + PROGRESS_PAUSE;
  while (!isDone()) {
    if (auto scan = scans.nextWithin(WAIT)) deliver(scan, rows);
    if (isScrolling || std::chrono::steady_clock::now() < nextProgress) continue;
    progress.show(tally.getText());
    nextProgress = std::chrono::steady_clock::now() + PROGRESS_PAUSE;
  }
}

void cScanJob::deliver(boost::shared_ptr<cScan> scan, const iScanFormat& rows) {
  {
    const std::lock_guard<std::mutex> lock(finishing);
    last = scan;
    tally.meter.count();
  }
  if (hasAll()) reader.reset();  // one who leaves once the last scan is written has got all
  output.write(rows.rows(tally.meter.getTotal(), *scan, tally.meter.getRate()));
}

bool cScanJob::hasAll() const { return count != 0 && tally.meter.getTotal() >= count; }

/// Also hands over to `finishOnExit` what was counted so far.
bool cScanJob::isDone() {
  const std::lock_guard<std::mutex> lock(finishing);
  return hasAll() || stop.isRequested();
}

/// In another thread, when the process exits while the job's own searches or waits for the
/// sensor, or hangs in a write.
void cScanJob::finishOnExit() {
  try {
    finish(false);
  } catch (cFailure& failure) {
    failure.report();
  }
}

void cScanJob::finish(bool isFailed) {
  const std::lock_guard<std::mutex> lock(finishing);
  if (isFinished) return;
  isFinished = true;
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
  if (tally.isStarted) printMessage(tally.getText());
  if (last && !isWhole && !getLastWords().empty()) printMessage(getLastWords());
}

std::string cScanJob::getLastWords() const {
  const std::string place = output.getTemporary();
  return place.empty() ? "" : "the scans taken until then are in " + oneLine(place);
}

void cScanJob::draw() {
  if (options.plot.empty()) return;
  const cScan readings = lastRange->readingsOf(*last);
  const std::string subtitle =
      fmt::format("{} on {}, {} of {} readings valid", isoTimestamp(last->timeStamp.time),
                  name.getText(), readings.points.size(), last->points.size());
  const cSvgPlot drawing(readings, sanitized(product), sanitized(subtitle));
  if (!options.isPlotShown) return writeAtomically(options.plot, drawing.getText());
  plotReader.reset();
  (plotOutput ? *plotOutput : output).write(drawing.getText());
}

}  // namespace tool
