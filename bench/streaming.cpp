#include <algorithm>
#include <map>

#include "bench/allocations.h"
#include "bench/cFeeder.h"
#include "bench/iReader.h"
#include "bench/measure.h"
#include "bench/scanRecord.h"
#include "bench/suites.h"

namespace {

constexpr int PACED_WARM_UP = 5;  // scans
constexpr double FLOOD_WARM_UP = 0.1;

/// A reader's figures, one per round.
struct cSeries {
  std::vector<double> cpu;          // microseconds per scan
  std::vector<double> allocations;  // per scan
  std::vector<double> throughput;   // MB/s
  std::vector<double> p50, p99;     // microseconds
};
using cSeriesByReader = std::map<std::string, cSeries>;

void takePaced(const cReaderKind& kind, int scans, cSeries& series) {
  const cFeeder feeder(1 / SCANS_PER_SECOND);
  const std::unique_ptr<iReader> reader = kind.make(feeder.getPath());
  for (int taken = 0; taken < PACED_WARM_UP; ++taken) reader->take();
  std::vector<double> moments(static_cast<std::size_t>(scans));
  const double cpuBefore = cpuTime();
  const std::uint64_t allocationsBefore = countAllocations();
  for (double& moment : moments) {
    reader->take();
    moment = now();
  }
  const double cpu = cpuTime() - cpuBefore;
  const std::uint64_t allocated = countAllocations() - allocationsBefore;
  series.cpu.push_back(cpu * 1e6 / scans);
  series.allocations.push_back(static_cast<double>(allocated) / scans);
  std::vector<double> latencies;
  for (std::size_t i = 0; i < moments.size(); ++i) {
    latencies.push_back((moments[i] - feeder.getEnd(i + PACED_WARM_UP)) * 1e6);
  }
  series.p50.push_back(median(latencies));
  series.p99.push_back(quantile(latencies, 0.99));
}

void takeFlood(const cReaderKind& kind, double seconds, cSeries& series) {
  const cFeeder feeder(0);
  const std::unique_ptr<iReader> reader = kind.make(feeder.getPath());
  const double warm = now() + FLOOD_WARM_UP;
  while (now() < warm) reader->take();
  const double begin = now();
  double end = begin;
  std::size_t scans = 0;
  while (end < begin + seconds) {
    reader->take();
    ++scans;
    end = now();
  }
  const std::size_t bytes = scans * makeScanRecord(std::string(SCAN_COMMAND) + ";1").size();
  series.throughput.push_back(static_cast<double>(bytes) / (end - begin) / 1e6);
}

/// Measures every reader in each round; the rounds start with different readers.
template <typename tMeasure>
cSeriesByReader alternate(int rounds, tMeasure take) {
  cSeriesByReader all;
  std::vector<cReaderKind> kinds = readerKinds();
  for (int round = 0; round < rounds; ++round) {
    for (const cReaderKind& kind : kinds) take(kind, all[kind.name]);
    std::rotate(kinds.begin(), kinds.begin() + 1, kinds.end());
  }
  return all;
}

/// The median of the rounds' ratios.
double ratio(const std::vector<double>& ours, const std::vector<double>& other) {
  std::vector<double> ratios;
  for (std::size_t round = 0; round < ours.size(); ++round) {
    ratios.push_back(ours[round] / other[round]);
  }
  return median(ratios);
}

void compareScanner(cSeriesByReader& all, cReport& report) {
  const cSeries& scanner = all["scanner"];
  const cSeries& floor = all["read4096_worker"];
  report.addRow("scanner_cpu_per_scan_vs_read4096_worker", ratio(scanner.cpu, floor.cpu),
                eGoal::AT_MOST, 1.2);
  report.addRow("scanner_latency_p50_vs_read4096_worker", ratio(scanner.p50, floor.p50),
                eGoal::AT_MOST, 1.2);
  report.addRow("scanner_latency_p99_vs_read4096_worker", ratio(scanner.p99, floor.p99),
                eGoal::AT_MOST, 2.0);
  report.addRow("scanner_cpu_per_scan_vs_library", ratio(scanner.cpu, all["library"].cpu),
                eGoal::AT_MOST, 0.2);
  report.addRow("scanner_allocations_per_scan", median(scanner.allocations), eGoal::AT_MOST, 4);
}

}  // namespace

void measurePaced(const cPlan& plan, cReport& report) {
  cSeriesByReader all = alternate(plan.rounds, [&plan](const cReaderKind& kind, cSeries& series) {
    takePaced(kind, plan.pacedScans, series);
  });
  const cSeries& library = all["library"];
  const cSeries& floor = all["f12"];
  report.addRow("cpu_per_scan_vs_f12", ratio(library.cpu, floor.cpu), eGoal::AT_MOST, 1.05);
  report.addRow("cpu_per_scan_vs_asio12", ratio(library.cpu, all["asio12"].cpu), eGoal::AT_MOST,
                1.0);
  report.addRow("cpu_per_scan_vs_f12_worker", ratio(library.cpu, all["f12_worker"].cpu));
  report.addRow("latency_p50_vs_f12", ratio(library.p50, floor.p50), eGoal::AT_MOST, 1.15);
  report.addRow("latency_p99_vs_f12", ratio(library.p99, floor.p99), eGoal::AT_MOST, 2.0);
  report.addRow("latency_p50_vs_f12_worker", ratio(library.p50, all["f12_worker"].p50));
  report.addRow("allocations_per_scan", median(library.allocations));
  compareScanner(all, report);
  for (const cReaderKind& kind : readerKinds()) {
    const cSeries& series = all[kind.name];
    report.addReaderFigure(kind.name, "cpu_us_per_scan", median(series.cpu));
    report.addReaderFigure(kind.name, "latency_p50_us", median(series.p50));
    report.addReaderFigure(kind.name, "latency_p99_us", median(series.p99));
    report.addReaderFigure(kind.name, "allocations_per_scan", median(series.allocations));
  }
}

void measureFlood(const cPlan& plan, cReport& report) {
  cSeriesByReader all = alternate(plan.rounds, [&plan](const cReaderKind& kind, cSeries& series) {
    takeFlood(kind, plan.floodSeconds, series);
  });
  report.addRow("flood_throughput_vs_f12", ratio(all["library"].throughput, all["f12"].throughput),
                eGoal::AT_LEAST, 0.95);
  for (const cReaderKind& kind : readerKinds()) {
    report.addReaderFigure(kind.name, "flood_mb_per_s", median(all[kind.name].throughput));
  }
}
