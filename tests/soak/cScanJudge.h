#pragma once

#include <algorithm>
#include <climits>
#include <optional>
#include <utility>
#include <vector>

#include "sim/tarvosim.h"
#include "tests/soak/cTally.h"

/// Holds the scans that a host got against those that a simulated sensor sent, and counts them. One
/// thread.
class cScanJudge {
 public:
  /// The sensor must outlive it.
  cScanJudge(const cSimSensor& sensor, cTally& tally) : sensor(sensor), tally(tally) {}
  /// Counts the scans that were not delivered, each by its reason.
  ~cScanJudge() {
    for (const std::uint64_t scan : missing) ++(isExplained(scan) ? tally.lost : tally.unexplained);
  }
  cScanJudge(const cScanJudge&) = delete;
  cScanJudge& operator=(const cScanJudge&) = delete;

  /// Which of the sensor's scans this one is, counted from 0; empty if it measured nothing like it.
  /// Each is delivered once and in order.
  /// @param maxReading  larger readings are reported as this
  std::optional<std::uint64_t> judge(const std::vector<int>& distances, int first, int last,
                                     int maxReading = INT_MAX) {
    // A scan may reach the host a moment before the sensor counts it as sent.
    const auto isSent = [this](std::uint64_t scan) {
      return sensor.waitForSentScans(scan + 1, std::chrono::seconds(1));
    };
    for (std::uint64_t scan = next; scan <= next + MAX_LOST && isSent(scan); ++scan) {
      const std::uint32_t turn = sensor.getSentScans().at(scan);
      if (sensor.getTrueDistances(turn, first, last, 1, maxReading) != distances) continue;
      skipTo(scan);
      ++next;
      ++tally.delivered;
      return scan;
    }
    ++tally.wrong;
    return std::nullopt;
  }

  /// A fault may have cost the sensor's scans from `first` to `last`.
  void addWindow(std::uint64_t first, std::uint64_t last) { windows.emplace_back(first, last); }

  /// What the sensor sent before that scan and was not delivered is missing.
  void skipTo(std::uint64_t scan) {
    for (; next < scan; ++next) missing.push_back(next);
  }

 private:
  static constexpr std::uint64_t MAX_LOST = 200;  // consecutive scans

  bool isExplained(std::uint64_t scan) const {
    return std::any_of(windows.begin(), windows.end(), [scan](const auto& window) {
      return window.first <= scan && scan <= window.second;
    });
  }

  const cSimSensor& sensor;
  cTally& tally;
  std::uint64_t next = 0;              // the scan expected next
  std::vector<std::uint64_t> missing;  // scans before `next` that were not delivered
  std::vector<std::pair<std::uint64_t, std::uint64_t>> windows;
};
