#include <benchmark/benchmark.h>
#include <fmt/core.h>

#include <istream>
#include <map>
#include <streambuf>

#include "bench/measure.h"
#include "bench/plainDecoder.h"
#include "bench/scanRecord.h"
#include "bench/suites.h"
#include "tarvolink/scip/cSCIPRecordReader.h"
#include "tarvolink/tarvolink.h"

namespace {

/// Reads a string without copying it.
class cMemoryBuffer : public std::streambuf {
 public:
  explicit cMemoryBuffer(std::string& text) {
    setg(text.data(), text.data(), text.data() + text.size());
  }
};

/// A driver that only converts records. Nothing is sent on its link, so that any terminal will do.
class cConverter : public cSensorDriverSCIP2 {
 public:
  cConverter() : cSensorDriverSCIP2(makeLink()) {
    numSpot = STEPS_PER_TURN;
    frontSpot = FRONT_STEP;
  }
  boost::shared_ptr<cScan> takeScan() { return lockable::takeFirst(*scans); }

 private:
  static boost::shared_ptr<cTarvoLink> makeLink() {
    using tPort = kavTBX::basic_portbuf<char>;
    return boost::shared_ptr<cTarvoLink>(
        new cTarvoLink(boost::shared_ptr<tPort>(new tPort("/dev/ptmx", {}))));
  }
};

std::string makeRecord() { return makeScanRecord(std::string(SCAN_COMMAND) + ";4"); }

void decodeWithLibrary(benchmark::State& state) {
  std::string bytes = makeRecord();
  cConverter converter;
  while (state.KeepRunning()) {
    cMemoryBuffer memory(bytes);
    std::istream stream(&memory);
    const boost::shared_ptr<cSCIPRecord> record(new cSCIPRecord);
    cSCIPRecordReader(stream).read(*record);
    converter.pushScanRecord(record);
    const boost::shared_ptr<cScan> scan = converter.takeScan();
    if (!scan || scan->points.size() != READINGS) return state.SkipWithError("no scan");
    benchmark::DoNotOptimize(scan->points.data());
  }
}

void decodeWithoutLibrary(benchmark::State& state) {
  const std::string bytes = makeRecord();
  std::vector<int> distances;
  while (state.KeepRunning()) {
    decodePlainly(bytes.data(), bytes.size(), distances);
    benchmark::DoNotOptimize(distances.data());
    benchmark::ClobberMemory();
  }
}

BENCHMARK(decodeWithLibrary);
BENCHMARK(decodeWithoutLibrary);

/// Keeps the CPU time per iteration of each repetition.
class cCollector : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context&) override { return true; }
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.run_type != Run::RT_Iteration) continue;
      if (run.error_occurred) throw std::runtime_error(run.error_message);
      times[run.run_name.function_name].push_back(run.GetAdjustedCPUTime());
    }
  }
  std::map<std::string, std::vector<double>> times;  ///< nanoseconds
};

}  // namespace

void measureDecoding(const cPlan& plan, cReport& report) {
  std::string words[] = {"tarvobench", "--benchmark_enable_random_interleaving=true",
                         fmt::format("--benchmark_repetitions={}", plan.rounds),
                         fmt::format("--benchmark_min_time={}", plan.decodingSeconds)};
  char* arguments[] = {words[0].data(), words[1].data(), words[2].data(), words[3].data()};
  int count = 4;
  benchmark::Initialize(&count, arguments);
  cCollector collector;
  benchmark::RunSpecifiedBenchmarks(&collector);
  const double library = median(collector.times["decodeWithLibrary"]);
  const double plain = median(collector.times["decodeWithoutLibrary"]);
  report.addRow("parse_decode_vs_scalar", library / plain, eGoal::AT_MOST, 2.0);
  report.note("parse_decode_us", {{"library", library / 1e3}, {"plain", plain / 1e3}});
}
