#include "tests/soak/cScanJudge.h"

namespace {

constexpr std::uint64_t MAX_LOST = 200;  // consecutive scans

const char* nameOf(eSimFault fault) {
  for (const cSimFaultInfo& info : simFaultTable())
    if (info.fault == fault) return info.name;
  return "none";
}

}  // namespace

cScanJudge::~cScanJudge() {
  for (const std::uint64_t scan : missing) tally.addLost(findFault(scan));
}

std::optional<std::uint64_t> cScanJudge::judge(const std::vector<int>& distances, int first,
                                               int last, int maxReading) {
  // A scan may reach the host a moment before the sensor counts it as sent.
  const auto isSent = [this](std::uint64_t scan) {
    return sensor.waitForSentScans(scan + 1, std::chrono::seconds(1));
  };
  for (std::uint64_t scan = next; scan <= next + MAX_LOST && isSent(scan); ++scan) {
    const std::uint32_t turn = sensor.getSentScans().at(scan);
    if (sensor.getTrueDistances(turn, first, last, 1, maxReading) != distances) continue;
    for (; next < scan; ++next) missing.push_back(next);
    ++next;
    tally.addDelivered();
    return scan;
  }
  return std::nullopt;
}

void cScanJudge::addWindow(eSimFault fault, std::uint64_t first, std::uint64_t last) {
  windows.push_back({fault, first, last});
}

void cScanJudge::finish() {
  for (const std::uint64_t sent = sensor.getCounters().scans; next < sent; ++next)
    missing.push_back(next);
}

const char* cScanJudge::findFault(std::uint64_t scan) const {
  for (const cWindow& window : windows)
    if (window.first <= scan && scan <= window.last) return nameOf(window.fault);
  return nullptr;
}
