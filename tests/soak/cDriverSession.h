#pragma once

#include "tests/soak/cSession.h"
#include "tests/support/driving.h"

/// With a driver. The constructor throws std::runtime_error if the sensor does not scan.
class cDriverSession : public cSession {
 public:
  cDriverSession(std::mt19937& rng, cTally& tally)
      : cSession(turning(40, eSimDialect::SCIP2, eSimModel::LONG_RANGE), rng, tally),
        driver(openReady(sensor.getPath())) {
    startRetrying(sensor, *driver, 0, LAST_STEP, 1, 0, MAX_DISTANCE);
  }

 protected:
  /// Those that sums, lengths and the number of points reveal.
  bool begin(const cSimFaultInfo& info) override {
    using F = eSimFault;
    for (const F fault :
         {F::GARBAGE, F::LOST_BYTES, F::WRONG_SUM, F::CUT_SHORT, F::LOST_LINE_FEED, F::LOST_LINE,
          F::LOST_END, F::DOUBLED_LINE, F::EMPTY_STATUS, F::CR_LF, F::STATUS, F::OTHER_ECHO,
          F::OTHER_TAG, F::WRONG_COUNT, F::UNSOLICITED, F::ENDLESS_BODY, F::STALL, F::BURSTS}) {
      if (fault != info.fault) continue;
      sensor.setFault(fault, cSimSensor::DEFAULT_VALUE, "scan");
      return true;
    }
    return false;
  }

  void take(int milliseconds) override {
    const auto end = cClock::now() + std::chrono::milliseconds(milliseconds);
    do {
      try {
        if (milliseconds > 0) driver->waitScan(50);
        while (driver->getScanNum() > 0) judge(distancesOf(driver->getScanFirst()));
      } catch (const std::out_of_range&) {
        ++tally.flagged;
      }
    } while (cClock::now() < end);
  }

  /// A lost line end merges the last affected scan with the next; besides, one more was queued
  /// before the fault was cleared.
  std::uint64_t recover(const cSimFaultInfo&) override { return sensor.getCounters().scans + 2; }

  void finish() override {
    if (rng() % 2 == 0) {
      // The last few have been sent but not read yet.
      scans.addWindow(before(sensor.getCounters().scans, 8), UINT64_MAX);
      sensor.unplug();
    } else if (!stopLeftScan(*driver)) {
      throw std::runtime_error("a sensor without a fault does not stop");
    }
    take(100);
    scans.skipTo(sensor.getCounters().scans);
  }

 private:
  static constexpr int LAST_STEP = 1080;
  static constexpr int MAX_DISTANCE = 60000;

  void judge(const std::vector<int>& distances) {
    if (distances.size() != LAST_STEP + 1)
      ++tally.flagged;
    else
      scans.judge(distances, 0, LAST_STEP);
  }

  tDriver2 driver;
};
