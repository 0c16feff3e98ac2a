#include <fmt/core.h>

#include "bench/cFleet.h"
#include "bench/measure.h"
#include "bench/suites.h"

namespace {

/// CPU time a scan with many sensors and with one.
struct cComparison {
  std::vector<double> ratios, many, one;  // one per round; seconds

  void add(cFleet& fleet, const cPlan& plan) {
    many.push_back(
        fleet.scan(static_cast<std::size_t>(plan.sensors), plan.scalingSeconds).cpuPerScan());
    one.push_back(fleet.scan(1, plan.scalingSeconds).cpuPerScan());
    ratios.push_back(many.back() / one.back());
  }

  void report(cReport& to, const std::string& key, const std::string& note) const {
    to.addRow(key, median(ratios), eGoal::AT_MOST, 1.10);
    to.note(note, {{"many", median(many) * 1e6}, {"one", median(one) * 1e6}});
  }
};

void compareWithOne(cFleet& drivers, cFleet& scanners, const cPlan& plan, cReport& report) {
  cComparison library, scanner;
  for (int round = 0; round < plan.rounds; ++round) {
    library.add(drivers, plan);
    scanner.add(scanners, plan);
  }
  library.report(report, fmt::format("cpu_per_scan_{}_vs_1", plan.sensors),
                 "scaling_cpu_us_per_scan");
  scanner.report(report, fmt::format("scanner_cpu_{}_vs_1", plan.sensors),
                 "scanner_scaling_cpu_us_per_scan");
}

/// A long time with many sensors, and what became of their scans.
struct cEndurance {
  cUsage usage;
  std::uint64_t sent = 0;
  std::uint64_t skipped = 0;  ///< not sent: the reader was behind
  double sensorsPerCore = 0;

  std::string describe() const {
    return fmt::format("{} sent, {} delivered, {} skipped, {} missing", sent, usage.delivered,
                       skipped, usage.missing);
  }
};

cEndurance endure(cFleet& fleet, cSimHost& host, const cPlan& plan) {
  cEndurance result;
  const cSimHost::cTotals before = host.getTotals();
  result.usage = fleet.scan(static_cast<std::size_t>(plan.enduranceSensors), plan.enduranceSeconds);
  const cSimHost::cTotals after = host.getTotals();
  result.sent = after.scans - before.scans;
  result.skipped = after.skippedScans - before.skippedScans;
  result.sensorsPerCore = plan.enduranceSensors * result.usage.wall / result.usage.cpu;
  return result;
}

void note(cReport& report, const std::string& key, const cEndurance& result, const cPlan& plan) {
  report.note(key, {{"sensors", plan.enduranceSensors},
                    {"sensors_per_core", result.sensorsPerCore},
                    {"seconds", result.usage.wall},
                    {"sent", result.sent},
                    {"delivered", result.usage.delivered},
                    {"skipped", result.skipped},
                    {"missing", result.usage.missing}});
}

void reportEndurance(const cEndurance& library, const cEndurance& scanner, const cPlan& plan,
                     cReport& report) {
  report.addRow("sensors_per_core", library.sensorsPerCore, eGoal::AT_LEAST, 25);
  if (library.sent != library.usage.delivered || library.skipped != 0) {
    report.markShort("sensors_per_core", library.describe());
  }
  note(report, "endurance", library, plan);

  constexpr auto KEY = "scanner_sensors_per_core_vs_library";
  report.addRow(KEY, scanner.sensorsPerCore / library.sensorsPerCore, eGoal::AT_LEAST, 5);
  // What its sensor sent while a scanner stopped is nobody's: the scan that was waiting for its
  // thread and the one under way.
  const std::uint64_t left = 2 * static_cast<std::uint64_t>(plan.enduranceSensors);
  const bool isComplete = scanner.usage.missing == 0 && scanner.skipped == 0 &&
                          scanner.sent - scanner.usage.delivered <= left;
  if (!isComplete) report.markShort(KEY, scanner.describe());
  note(report, "scanner_endurance", scanner, plan);
}

}  // namespace

void measureScaling(const cPlan& plan, cReport& report) {
  cSimSetting setting;
  setting.model = eSimModel::LONG_RANGE;
  cSimHost driven(setting, plan.sensors);
  cSimHost scanned(setting, plan.sensors);
  cDriverFleet drivers(driven);
  cScannerFleet scanners(scanned);
  const cEndurance library = endure(drivers, driven, plan);
  reportEndurance(library, endure(scanners, scanned, plan), plan, report);
  compareWithOne(drivers, scanners, plan, report);
}
