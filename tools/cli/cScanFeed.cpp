#include "tools/cli/cScanFeed.h"

#include <fmt/format.h>
#include <poll.h>

#include "tools/base/messages.h"
#include "tools/base/printable.h"
#include "tools/cli/lineLog.h"
#include "tools/cli/problems.h"

namespace tool {

namespace {

using tarvo::eState;

constexpr std::size_t DEPTH = 1000;  // scans that a slow reader of the output is waited for

}  // namespace

cScanFeed::cScanFeed(const cDevice& device, const cScanOptions& range, ePatience patience,
                     const cShutdown& stop)
    : device(device),
      patience(patience),
      stop(stop),
      scanner([&] {
        tarvo::cScannerOptions options = device.getScannerOptions();
        range.applyTo(options);
        options.onHealth = [this](const tarvo::cHealth& health) { hear(health); };
        options.onLine = lineLog();
        return options;
      }()),
      scans(scanner.subscribe(DEPTH)) {}

/// In the scanner's thread.
void cScanFeed::hear(const tarvo::cHealth& health) {
  const std::lock_guard<std::mutex> lock(mutex);
  news.push_back({health, cClock::now()});
}

tarvo::tScanPtr cScanFeed::next(std::chrono::milliseconds timeOut) {
  auto scan = scans.next(std::chrono::milliseconds(0));
  if (!scan) {
    follow();
    stop.waitFor(timeOut, scans.getDescriptor());
    scan = scans.next(std::chrono::milliseconds(0));
  }
  if (!scan) return scan;
  if (first == 0) first = scan->number;
  started = true;
  return scan;
}

void cScanFeed::follow() {
  std::deque<cNews> heard;
  {
    const std::lock_guard<std::mutex> lock(mutex);
    heard.swap(news);
  }
  for (const auto& change : heard) followTo(change);
}

void cScanFeed::followTo(const cNews& change) {
  state = change.health;
  if (state.state == eState::STOPPED && state.problem) throw toFailure(state.problem, started);
  if (state.state == eState::WAITING) return noteLoss(state.problem, change.when);
  if (state.state != eState::SCANNING) return;
  noteReturn(change.when);
  started = true;
  if (state.problem && lastNotice != state.problem.message) {
    lastNotice = state.problem.message;
    printNote(toMessage(state.problem));
  }
}

void cScanFeed::noteReturn(cClock::time_point when) {
  if (!lost) return;
  const std::chrono::duration<double> gone = when - *lost;
  printNote(fmt::format("{} is back after {:.1f} s", oneLine(device.getText()), gone.count()));
  lost.reset();
  lastNotice.clear();
}

bool cScanFeed::isWaiting() const {
  if (patience == ePatience::BOTH) return true;
  return patience == (started ? ePatience::RECONNECT : ePatience::WAIT);
}

void cScanFeed::noteLoss(const tarvo::cProblem& problem, cClock::time_point when) {
  const bool isHopeless = problem.kind == tarvo::eProblem::RANGE_IMPOSSIBLE ||
                          problem.kind == tarvo::eProblem::DEVICE_UNUSABLE;
  if (!isWaiting() || isHopeless) throw toFailure(problem, started);
  if (started && !lost) lost = when;
  if (lastNotice == problem.message) return;
  lastNotice = problem.message;
  printNote(hasHinted ? oneLine(problem.message)
                      : fmt::format("{}\nwaiting for {} ({})", toMessage(problem),
                                    oneLine(device.getText()), started ? "--reconnect" : "--wait"));
  hasHinted = true;
}

bool cScanFeed::hasBacklog() {
  pollfd waiting{scans.getDescriptor(), POLLIN, 0};
  return poll(&waiting, 1, 0) > 0;
}

tarvo::cHealth cScanFeed::getHealth() const {
  tarvo::cHealth health = scanner.getHealth();
  health.dropped = scans.getDropped();
  return health;
}

}  // namespace tool
