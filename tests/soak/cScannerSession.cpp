#include "tests/soak/cScannerSession.h"

#include <unistd.h>

#include <filesystem>
#include <iostream>

using std::chrono::milliseconds;
using std::chrono::seconds;

namespace {

constexpr int FAULTS_PER_SESSION = 10;  // then a new sensor and scanner
constexpr std::size_t DEPTH = 1000;     // the scans of 25 s
// The longest search that a fault can leave behind, four times over for a busy machine.
constexpr seconds LONGEST_RECOVERY(30);

cSimSetting linked(eSimDialect dialect, std::mt19937::result_type number) {
  cSimSetting setting;
  setting.dialect = dialect;
  setting.rate = 40;
  setting.link = std::filesystem::temp_directory_path() /
                 ("tarvosoak-" + std::to_string(getpid()) + "-" + std::to_string(number));
  return setting;
}

}  // namespace

cScannerSession::cScannerSession(eSimDialect dialect, std::mt19937& rng, cTally& tally)
    : dialect(dialect),
      rng(rng),
      tally(tally),
      sensor(linked(dialect, rng())),
      scans(sensor, tally),
      scanner(sensor.getSetting().link),
      subscription(scanner.subscribe(DEPTH)) {}

void cScannerSession::run(cClock::time_point end) {
  take(seconds(1));
  const auto& faults = simFaultTable();
  for (int fault = 0; fault < FAULTS_PER_SESSION && cClock::now() < end; ++fault)
    endure(faults[rng() % faults.size()]);
  scanner.stop();
  take(milliseconds(0));
}

void cScannerSession::endure(const cSimFaultInfo& info) {
  const std::uint64_t first = sensor.getCounters().scans;
  // Every bit of a SCIP 2.0 record is covered; of a SCIP 1.x record the echo and the status are.
  const bool isAnyBit = info.fault == eSimFault::FLIPPED_BIT && dialect == eSimDialect::SCIP2;
  sensor.setFault(info.fault, isAnyBit ? static_cast<int>(rng() % 16384) : info.value);
  take(milliseconds(200 + rng() % 2000));
  sensor.clearFault(info.fault);
  recover(info, first);
  take(milliseconds(500 + rng() % 1500));
}

void cScannerSession::take(milliseconds time) {
  const auto end = cClock::now() + time;
  do {
    while (const tarvo::tScanPtr scan = subscription.next(milliseconds(0))) judge(scan);
    if (time.count() > 0) {
      if (const tarvo::tScanPtr scan = subscription.next(milliseconds(50))) judge(scan);
    }
  } while (cClock::now() < end);
}

/// Waits for a scan that was sent after the fault: until then scans may be lost to it.
void cScannerSession::recover(const cSimFaultInfo& info, std::uint64_t first) {
  const std::uint64_t cleared = sensor.getCounters().scans;
  std::uint64_t last = UINT64_MAX;
  const auto end = cClock::now() + LONGEST_RECOVERY;
  while (last == UINT64_MAX && cClock::now() < end) {
    const tarvo::tScanPtr scan = subscription.next(milliseconds(100));
    const auto sent = scan ? judge(scan) : std::nullopt;
    // One more scan was queued before the fault was cleared.
    if (sent && *sent > cleared + 2) last = *sent;
  }
  scans.addWindow(info.fault, first - std::min<std::uint64_t>(first, 2), last);
  if (last < UINT64_MAX) return;
  std::cout << "no scan comes after " << info.name << ": " << scanner.getHealth().problem.message
            << std::endl;
  tally.addStuck();
}

std::optional<std::uint64_t> cScannerSession::judge(const tarvo::tScanPtr& scan) {
  const tarvo::cSensorInfo& info = *scan->sensor;
  const bool isNarrow = info.dialect == tarvo::eDialect::SCIP1;  // two characters a reading
  const auto sent =
      scans.judge(scan->distances, info.firstStep, info.lastStep, isNarrow ? 4095 : INT_MAX);
  if (!sent) tally.addWrong();
  return sent;
}
