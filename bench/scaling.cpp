#include <fmt/core.h>

#include <atomic>
#include <chrono>
#include <future>
#include <thread>

#include "bench/cDriverReader.h"
#include "bench/cSimHost.h"
#include "bench/measure.h"
#include "bench/suites.h"

namespace {

constexpr double WARM_UP = 0.5;  // seconds

void sleepFor(double seconds) {
  std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
}

/// What some time of scanning cost.
struct cUsage {
  double wall = 0;              ///< seconds, the window in which CPU time was counted
  double cpu = 0;               ///< seconds in that window
  std::uint64_t scans = 0;      ///< delivered in that window
  std::uint64_t delivered = 0;  ///< delivered from start to stop
  double cpuPerScan() const { return cpu / static_cast<double>(scans); }
};

/// A driver for each of a host's sensors, with a thread that takes its scans.
class cFleet {
 public:
  explicit cFleet(const cSimHost& host) {
    for (const std::string& path : host.getPaths()) drivers.push_back(createDriver(path));
  }

  /// Scans for `seconds` with the first `count` sensors.
  cUsage scan(std::size_t count, double seconds) {
    stopping = false;
    const std::uint64_t before = delivered;
    std::vector<std::future<void>> takers;
    for (std::size_t i = 0; i < count; ++i) {
      takers.push_back(std::async(std::launch::async, [this, i] { takeAll(*drivers[i]); }));
    }
    sleepFor(WARM_UP);
    cUsage usage = watch(seconds);
    stopping = true;
    for (std::future<void>& taker : takers) taker.get();
    usage.delivered = delivered - before;
    return usage;
  }

 private:
  cUsage watch(double seconds) const {
    cUsage usage;
    const double wallBefore = now();
    const double cpuBefore = cpuTime();
    const std::uint64_t scansBefore = delivered;
    sleepFor(seconds);
    usage.wall = now() - wallBefore;
    usage.cpu = cpuTime() - cpuBefore;
    usage.scans = delivered - scansBefore;
    return usage;
  }

  void takeAll(cSensorDriver& driver) {
    iSCIP2IF& scanner = *driver.getSCIP2IF();
    startEndlessScan(driver);
    for (; !stopping; ++delivered) takeScan(scanner);
    scanner.abortScan();
    while (scanner.getScanFirst()) ++delivered;
  }

  std::vector<boost::shared_ptr<cSensorDriver>> drivers;
  std::atomic<bool> stopping{false};
  std::atomic<std::uint64_t> delivered{0};
};

void compareWithOne(cFleet& fleet, const cPlan& plan, cReport& report) {
  std::vector<double> ratios, many, one;
  for (int round = 0; round < plan.rounds; ++round) {
    many.push_back(
        fleet.scan(static_cast<std::size_t>(plan.sensors), plan.scalingSeconds).cpuPerScan());
    one.push_back(fleet.scan(1, plan.scalingSeconds).cpuPerScan());
    ratios.push_back(many.back() / one.back());
  }
  report.addRow(fmt::format("cpu_per_scan_{}_vs_1", plan.sensors), median(ratios), eGoal::AT_MOST,
                1.10);
  report.note("scaling_cpu_us_per_scan",
              {{"many", median(many) * 1e6}, {"one", median(one) * 1e6}});
}

void measureEndurance(cFleet& fleet, cSimHost& host, const cPlan& plan, cReport& report) {
  const cSimHost::cTotals before = host.getTotals();
  const cUsage usage =
      fleet.scan(static_cast<std::size_t>(plan.enduranceSensors), plan.enduranceSeconds);
  const cSimHost::cTotals after = host.getTotals();
  const std::uint64_t sent = after.scans - before.scans;
  const std::uint64_t skipped = after.skippedScans - before.skippedScans;
  report.addRow("sensors_per_core", plan.enduranceSensors * usage.wall / usage.cpu, eGoal::AT_LEAST,
                25);
  if (sent != usage.delivered || skipped != 0) {
    report.markShort("sensors_per_core", fmt::format("{} sent, {} delivered, {} skipped", sent,
                                                     usage.delivered, skipped));
  }
  report.note("endurance", {{"sensors", plan.enduranceSensors},
                            {"seconds", usage.wall},
                            {"sent", sent},
                            {"delivered", usage.delivered},
                            {"skipped", skipped}});
}

}  // namespace

void measureScaling(const cPlan& plan, cReport& report) {
  cSimSetting setting;
  setting.model = eSimModel::LONG_RANGE;
  cSimHost host(setting, plan.sensors);
  cFleet fleet(host);
  measureEndurance(fleet, host, plan, report);
  compareWithOne(fleet, plan, report);
}
