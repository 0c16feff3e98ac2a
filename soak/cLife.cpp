#include "soak/cLife.h"

#include <algorithm>
#include <stdexcept>

namespace {

constexpr int LAST = 1080;
constexpr int FAR = 60000;
constexpr std::uint64_t MOST_LOST = 200;  // in a row
constexpr int FAULTS_OF_A_LIFE = 10;      // then sensor and driver are made anew

// The harm that sums, lengths and the number of points tell.
const std::vector<eSimFault> FAULTS = {
    eSimFault::GARBAGE,      eSimFault::LOST_BYTES,     eSimFault::WRONG_SUM,
    eSimFault::CUT_SHORT,    eSimFault::LOST_LINE_FEED, eSimFault::LOST_LINE,
    eSimFault::LOST_END,     eSimFault::DOUBLED_LINE,   eSimFault::EMPTY_STATUS,
    eSimFault::CR_LF,        eSimFault::STATUS,         eSimFault::OTHER_ECHO,
    eSimFault::OTHER_TAG,    eSimFault::WRONG_COUNT,    eSimFault::UNSOLICITED,
    eSimFault::ENDLESS_BODY, eSimFault::STALL,          eSimFault::BURSTS};

const char* nameOf(eSimFault fault) {
  for (const cSimFaultInfo& info : simFaultTable())
    if (info.fault == fault) return info.name;
  return "none";
}

cSimSetting longRange() {
  cSimSetting setting;
  setting.model = eSimModel::LONG_RANGE;
  return setting;
}

std::uint64_t before(std::uint64_t scan, std::uint64_t count) {
  return scan - std::min(scan, count);
}

}  // namespace

cLife::cLife(std::mt19937& lots, cTally& counted)
    : random(lots), tally(counted), sensor(longRange()), driver(openReady(sensor.getPath())) {
  startSurely(sensor, *driver, 0, LAST, 1, 0, FAR);
}

cLife::~cLife() {
  for (const std::uint64_t scan : missing) tally.addLost(findFault(scan));
  tally.addTold(told);
}

void cLife::live(cClock::time_point end) {
  take(500);
  for (int fault = 0; fault < FAULTS_OF_A_LIFE && cClock::now() < end; ++fault)
    bear(FAULTS[random() % FAULTS.size()]);
  finish();
  const std::uint64_t sent = sensor.getCounters().scans;
  for (; next < sent; ++next) missing.push_back(next);
}

void cLife::bear(eSimFault fault) {
  const std::uint64_t first = sensor.getCounters().scans;
  sensor.setFault(fault, cSimSensor::DEFAULT_VALUE, "scan");
  take(static_cast<int>(200 + random() % 600));
  sensor.clearFault(fault);
  // The scan before may be glued to the first harmed one; one more is on its way, and another is
  // glued to that.
  windows.push_back({nameOf(fault), before(first, 1), sensor.getCounters().scans + 2});
  take(static_cast<int>(500 + random() % 1500));
}

void cLife::finish() {
  if (random() % 2 == 0) {
    // The last few are not read yet.
    windows.push_back({"unplugged", before(sensor.getCounters().scans, 8), UINT64_MAX});
    sensor.unplug();
    take(100);
  } else if (!stopLeftScan(*driver)) {
    throw std::runtime_error("a healthy sensor does not stop");
  }
  take(0);
}

void cLife::take(int milliseconds) {
  const auto end = cClock::now() + std::chrono::milliseconds(milliseconds);
  do {
    try {
      if (milliseconds > 0) driver->waitScan(50);
      while (driver->getScanNum() > 0) judge(distancesOf(driver->getScanFirst()));
    } catch (const std::out_of_range&) {
      ++told;
    }
  } while (cClock::now() < end);
}

void cLife::judge(const std::vector<int>& distances) {
  if (distances.size() != LAST + 1) {
    ++told;
    return;
  }
  // The host may have it a moment before the sensor has noted it as sent.
  const auto isSent = [this](std::uint64_t scan) {
    return sensor.waitForSentScans(scan + 1, std::chrono::seconds(1));
  };
  for (std::uint64_t scan = next; scan <= next + MOST_LOST && isSent(scan); ++scan)
    if (sensor.getTrueDistances(sensor.getSentScans().at(scan), 0, LAST, 1) == distances)
      return deliver(scan);
  tally.addUntrue();
}

void cLife::deliver(std::uint64_t scan) {
  for (; next < scan; ++next) missing.push_back(next);
  ++next;
  tally.addDelivered();
}

const char* cLife::findFault(std::uint64_t scan) const {
  for (const cWindow& window : windows)
    if (window.first <= scan && scan <= window.last) return window.fault;
  return nullptr;
}
