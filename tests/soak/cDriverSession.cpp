#include "tests/soak/cDriverSession.h"

#include <algorithm>
#include <stdexcept>

namespace {

constexpr int LAST_STEP = 1080;
constexpr int MAX_DISTANCE = 60000;
constexpr int FAULTS_PER_SESSION = 10;  // then a new sensor and driver

// The faults that sums, lengths and the number of points reveal.
const std::vector<eSimFault> FAULTS = {
    eSimFault::GARBAGE,      eSimFault::LOST_BYTES,     eSimFault::WRONG_SUM,
    eSimFault::CUT_SHORT,    eSimFault::LOST_LINE_FEED, eSimFault::LOST_LINE,
    eSimFault::LOST_END,     eSimFault::DOUBLED_LINE,   eSimFault::EMPTY_STATUS,
    eSimFault::CR_LF,        eSimFault::STATUS,         eSimFault::OTHER_ECHO,
    eSimFault::OTHER_TAG,    eSimFault::WRONG_COUNT,    eSimFault::UNSOLICITED,
    eSimFault::ENDLESS_BODY, eSimFault::STALL,          eSimFault::BURSTS};

cSimSetting longRange() {
  cSimSetting setting;
  setting.model = eSimModel::LONG_RANGE;
  return setting;
}

std::uint64_t before(std::uint64_t scan, std::uint64_t count) {
  return scan - std::min(scan, count);
}

}  // namespace

cDriverSession::cDriverSession(std::mt19937& rng, cTally& tally)
    : rng(rng),
      tally(tally),
      sensor(longRange()),
      driver(openReady(sensor.getPath())),
      scans(sensor, tally) {
  startRetrying(sensor, *driver, 0, LAST_STEP, 1, 0, MAX_DISTANCE);
}

cDriverSession::~cDriverSession() { tally.addFlagged(flagged); }

void cDriverSession::run(cClock::time_point end) {
  take(500);
  for (int fault = 0; fault < FAULTS_PER_SESSION && cClock::now() < end; ++fault)
    endure(FAULTS[rng() % FAULTS.size()]);
  finish();
  scans.finish();
}

void cDriverSession::endure(eSimFault fault) {
  const std::uint64_t first = sensor.getCounters().scans;
  sensor.setFault(fault, cSimSensor::DEFAULT_VALUE, "scan");
  take(static_cast<int>(200 + rng() % 600));
  sensor.clearFault(fault);
  // A lost line end merges a scan with the one before it, and the last affected one with the next.
  // Besides, one more scan was queued before the fault was cleared.
  scans.addWindow(fault, before(first, 1), sensor.getCounters().scans + 2);
  take(static_cast<int>(500 + rng() % 1500));
}

void cDriverSession::finish() {
  if (rng() % 2 == 0) {
    // The last few have been sent but not read yet.
    scans.addWindow(eSimFault::UNPLUGGED, before(sensor.getCounters().scans, 8), UINT64_MAX);
    sensor.unplug();
    take(100);
  } else if (!stopLeftScan(*driver)) {
    throw std::runtime_error("a sensor without a fault does not stop");
  }
  take(0);
}

void cDriverSession::take(int milliseconds) {
  const auto end = cClock::now() + std::chrono::milliseconds(milliseconds);
  do {
    try {
      if (milliseconds > 0) driver->waitScan(50);
      while (driver->getScanNum() > 0) judge(distancesOf(driver->getScanFirst()));
    } catch (const std::out_of_range&) {
      ++flagged;
    }
  } while (cClock::now() < end);
}

void cDriverSession::judge(const std::vector<int>& distances) {
  if (distances.size() != LAST_STEP + 1) {
    ++flagged;
  } else if (!scans.judge(distances, 0, LAST_STEP)) {
    tally.addWrong();
  }
}
