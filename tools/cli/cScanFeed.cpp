#include "tools/cli/cScanFeed.h"

#include <fmt/format.h>

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
  news.push_back(health);
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
  std::deque<tarvo::cHealth> heard;
  {
    const std::lock_guard<std::mutex> lock(mutex);
    heard.swap(news);
  }
  for (const auto& health : heard) followTo(health);
}

void cScanFeed::followTo(const tarvo::cHealth& health) {
  state = health;
  if (health.state == eState::WAITING) return noteLoss(health.problem);
  if (health.state != eState::SCANNING) return;
  started = true;
  if (lost && hasHinted) {
    const std::chrono::duration<double> gone = cClock::now() - *lost;
    printNote(fmt::format("{} is back after {:.1f} s", oneLine(device.getText()), gone.count()));
  }
  lost.reset();
  if (health.problem && lastNotice != health.problem.message) {
    lastNotice = health.problem.message;
    printNote(toMessage(health.problem));
  }
}

bool cScanFeed::isWaiting() const {
  if (patience == ePatience::BOTH) return true;
  return patience == (started ? ePatience::RECONNECT : ePatience::WAIT);
}

void cScanFeed::noteLoss(const tarvo::cProblem& problem) {
  if (!isWaiting()) throw toFailure(problem, started);
  if (!lost) lost = cClock::now();
  if (lastNotice == problem.message) return;
  lastNotice = problem.message;
  printNote(hasHinted ? oneLine(problem.message)
                      : fmt::format("{}\nwaiting for {} ({})", toMessage(problem),
                                    oneLine(device.getText()), started ? "--reconnect" : "--wait"));
  hasHinted = true;
}

tarvo::cHealth cScanFeed::getHealth() const {
  tarvo::cHealth health = scanner.getHealth();
  health.dropped = scans.getDropped();
  return health;
}

}  // namespace tool
