#pragma once

#include <unistd.h>

#include <filesystem>
#include <iostream>

#include "tarvoscan/tarvoscan.h"
#include "tests/soak/cSession.h"

/// With a scanner, which must come back from every fault that the sensor has.
class cScannerSession : public cSession {
 public:
  cScannerSession(eSimDialect dialect, std::mt19937& rng, cTally& tally)
      : cSession(linked(dialect, rng()), rng, tally),
        scanner(sensor.getSetting().link),
        subscription(scanner.subscribe(DEPTH)) {}

 protected:
  bool begin(const cSimFaultInfo& info) override {
    // Every bit of a SCIP 2.0 record is covered; of a SCIP 1.x record the echo and the status are.
    const bool isAnyBit =
        info.fault == eSimFault::FLIPPED_BIT && sensor.getSetting().dialect == eSimDialect::SCIP2;
    sensor.setFault(info.fault, isAnyBit ? static_cast<int>(rng() % 16384) : info.value);
    return true;
  }

  void take(int milliseconds) override {
    const auto end = cClock::now() + std::chrono::milliseconds(milliseconds);
    while (cClock::now() < end) takeOne(50);
    while (takeOne(0)) {
    }
  }

  /// Waits for a scan that was sent after the fault: until then scans may be lost to it.
  std::uint64_t recover(const cSimFaultInfo& info) override {
    const std::uint64_t cleared = sensor.getCounters().scans;
    const auto end = cClock::now() + LONGEST_RECOVERY;
    while (cClock::now() < end) {
      const auto sent = takeOne(100);
      // One more scan was queued before the fault was cleared.
      if (sent && *sent > cleared + 2) return *sent;
    }
    std::cout << "no scan comes after " << info.name << ": " << scanner.getHealth().problem.message
              << std::endl;
    ++tally.stuck;
    return UINT64_MAX;
  }

  void finish() override { scanner.stop(); }

 private:
  static constexpr std::size_t DEPTH = 1000;  // the scans of 25 s
  // The longest search that a fault can leave behind, four times over for a busy machine.
  static constexpr std::chrono::seconds LONGEST_RECOVERY{30};

  static cSimSetting linked(eSimDialect dialect, std::mt19937::result_type number) {
    cSimSetting setting = turning(40, dialect);
    setting.link = std::filesystem::temp_directory_path() /
                   ("tarvosoak-" + std::to_string(getpid()) + "-" + std::to_string(number));
    return setting;
  }

  /// Its number, if one comes in time that the sensor has sent.
  std::optional<std::uint64_t> takeOne(int milliseconds) {
    const tarvo::tScanPtr scan = subscription.next(std::chrono::milliseconds(milliseconds));
    if (!scan) return std::nullopt;
    const tarvo::cSensorInfo& info = *scan->sensor;
    const bool isNarrow = info.dialect == tarvo::eDialect::SCIP1;  // two characters a reading
    return scans.judge(scan->distances, info.firstStep, info.lastStep, isNarrow ? 4095 : INT_MAX);
  }

  tarvo::cScanner scanner;
  tarvo::cSubscription subscription;
};
