#include "tools/cScanJob.h"

#include <fmt/format.h>

#include "tools/cAbortGuard.h"
#include "tools/cSensor.h"
#include "tools/cSvgPlot.h"
#include "tools/notice.h"
#include "tools/printable.h"
#include "tools/replaceFile.h"
#include "tools/timestamp.h"

namespace tool {

namespace {

constexpr std::chrono::milliseconds WAIT{100};  // how soon an end is noticed while no scan comes
constexpr std::chrono::milliseconds RETRY_PAUSE{200};  // between two looks for a lost device
constexpr std::chrono::milliseconds PROGRESS_PAUSE{200};

}  // namespace

cScanJob::cScanJob(const cScanOrder& given, const cDeviceName& device, cStop& ender)
    : order(given), name(device), stop(ender), output(order.file, stop), reader(output, stop) {}

void cScanJob::run() {
  const cStop::cFarewell farewell(stop, [this] { finishSuddenly(); });
  try {
    takeAll();
  } catch (const cFailure&) {
    sayWhatIsLeft();
    throw;
  }
  finish();
}

void cScanJob::sayWhatIsLeft() {
  progress.clear();
  if (tally.isStarted) notice(tally.getText());
  if (!last) return;
  output.keepUnfinished();
  if (!getLastWords().empty()) notice(getLastWords());
}

void cScanJob::takeAll() {
  while (!isDone()) {
    try {
      takeFrom(cSensor(name, stop));
    } catch (cPassingFailure& trouble) {
      if (!order.isReconnecting || !tally.isStarted) throw;
      waitFor(trouble);
    }
  }
}

void cScanJob::waitFor(cPassingFailure& trouble) {
  progress.clear();
  if (saidTrouble != trouble.what()) {
    trouble.say();
    notice(fmt::format("waiting for {} to come back (--reconnect)", name.getText()));
  }
  saidTrouble = trouble.what();
  stop.waitFor(RETRY_PAUSE);
}

void cScanJob::takeFrom(const cSensor& sensor) {
  {
    const std::lock_guard<std::mutex> lock(finishing);
    lastRange.emplace(order.range, sensor);
    product = sensor.info().getProd();
  }
  const auto rows = makeScanFormat(order.format, *lastRange);
  if (!tally.isStarted) output.write(rows->header());
  const bool isReconnect = tally.isStarted;
  cAbortGuard::setLastWords(getLastWords());
  cScanRun scans(sensor, *lastRange, stop, tally);
  if (isReconnect) ++tally.reconnects;
  saidTrouble.clear();
  try {
    takeFrom(scans, *rows);
  } catch (cPassingFailure& trouble) {
    progress.clear();
    trouble.say();  // now, since to stop a sensor that is silent takes its time
    throw;
  }
}

void cScanJob::takeFrom(cScanRun& scans, const iScanFormat& rows) {
  auto nextProgress = std::chrono::steady_clock::now() + PROGRESS_PAUSE;
  while (!isDone()) {
    if (auto scan = scans.nextWithin(WAIT)) handOut(scan, rows);
    if (output.isTerminal() || std::chrono::steady_clock::now() < nextProgress) continue;
    progress.show(tally.getText());
    nextProgress = std::chrono::steady_clock::now() + PROGRESS_PAUSE;
  }
}

void cScanJob::handOut(boost::shared_ptr<cScan> scan, const iScanFormat& rows) {
  {
    const std::lock_guard<std::mutex> lock(finishing);
    last = scan;
    tally.meter.count();
  }
  output.write(rows.rows(tally.meter.getTotal(), *scan, tally.meter.getRate()));
}

/// Also hands over to `finishSuddenly` what was counted so far.
bool cScanJob::isDone() {
  const std::lock_guard<std::mutex> lock(finishing);
  const auto count = static_cast<std::size_t>(order.wanted);
  return (count != 0 && tally.meter.getTotal() >= count) || stop.isRequested();
}

/// In another thread, when a signal ends the process while the job's own searches or waits for the
/// sensor, or hangs in a write.
void cScanJob::finishSuddenly() {
  try {
    finish();
  } catch (cFailure& failure) {
    failure.say();
  }
}

void cScanJob::finish() {
  const std::lock_guard<std::mutex> lock(finishing);
  if (isFinished) return;
  isFinished = true;
  progress.clear();
  if (last) output.finish();  // else an older file is better than none
  if (last && !order.plot.empty()) draw();
  if (tally.isStarted) notice(tally.getText());
}

std::string cScanJob::getLastWords() const {
  const std::string place = output.getUnfinished();
  return place.empty() ? "" : "the scans taken until then are in " + place;
}

void cScanJob::draw() const {
  const cScan readings = lastRange->readingsOf(*last);
  const std::string subtitle =
      fmt::format("{} on {}, {} of {} readings valid", isoTimestamp(last->timeStamp.time),
                  name.getText(), readings.points.size(), last->points.size());
  const cSvgPlot drawing(readings, printable(product), printable(subtitle));
  replaceFile(order.plot, drawing.getText());
}

}  // namespace tool
