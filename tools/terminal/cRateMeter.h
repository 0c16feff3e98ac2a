#pragma once

#include <chrono>
#include <cstddef>
#include <deque>

namespace tool {

/// The rate at which scans come: over the latest ones, and over all of them. Steady clock, so
/// that setting the wall clock does not show.
class cRateMeter {
 public:
  using cClock = std::chrono::steady_clock;

  /// Counts one scan, taken at `now`.
  void count(cClock::time_point now = cClock::now()) {
    if (total++ == 0) begin = now;
    latest.push_back(now);
    if (latest.size() > WINDOW) latest.pop_front();
  }

  std::size_t getTotal() const { return total; }

  /// Scans per second over the latest ones; 0 while there are less than two.
  double getRate() const {
    return latest.empty() ? 0 : rate(latest.size(), latest.back() - latest.front());
  }

  /// Scans per second over all.
  double getMeanRate() const { return latest.empty() ? 0 : rate(total, latest.back() - begin); }

 private:
  static constexpr std::size_t WINDOW = 11;  // ten periods: steady to look at, yet soon in step

  static double rate(std::size_t scans, std::chrono::duration<double> time) {
    return time.count() > 0 ? static_cast<double>(scans - 1) / time.count() : 0;
  }

  std::size_t total = 0;
  cClock::time_point begin;
  std::deque<cClock::time_point> latest;
};

}  // namespace tool
