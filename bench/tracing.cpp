#include "bench/tracing.h"

#include <fmt/core.h>

#include <chrono>
#include <thread>

#include "bench/cDriverReader.h"
#include "bench/cFeeder.h"
#include "bench/cScannerReader.h"
#include "bench/cSimHost.h"
#include "bench/cTracedRun.h"
#include "bench/iReader.h"
#include "bench/scanRecord.h"
#include "bench/suites.h"

namespace {

constexpr int WARM_UP = 5;  // scans
// A traced call takes about 50 us: the reader could not keep up with the sensor's own rate.
constexpr double TRACED_PERIOD = 0.1;  // seconds

double countCalls(const cReaderKind& kind, int scans) {
  const cFeeder feeder(TRACED_PERIOD);
  const cTracedRun run({"--traced-reader", kind.name, "--traced-path", feeder.getPath(),
                        "--traced-amount", std::to_string(scans)});
  return static_cast<double>(run.countAll()) / scans;
}

double countIdleCalls(const std::string& what, double seconds) {
  cSimSetting setting;
  setting.model = eSimModel::LONG_RANGE;
  const cSimHost host(setting, 1);
  const cTracedRun run({what, "--traced-path", host.getPaths().front(), "--traced-amount",
                        fmt::format("{}", seconds)});
  // Without the sleep of the measurement itself.
  return static_cast<double>(run.countAll() - 1) / seconds;
}

}  // namespace

void runTracedReader(const std::string& name, const std::string& path, int scans) {
  const std::unique_ptr<iReader> reader = findReader(name).make(path);
  for (int taken = 0; taken < WARM_UP; ++taken) reader->take();
  cTracedRun::markBegin();
  for (int taken = 0; taken < scans; ++taken) reader->take();
  cTracedRun::markEnd();
}

void runTracedIdle(const std::string& path, double seconds) {
  const boost::shared_ptr<cSensorDriver> driver = createDriver(path);
  // The worker delivers its last answer a moment before it goes to sleep.
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  cTracedRun::markBegin();
  std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
  cTracedRun::markEnd();
}

void runTracedStopped(const std::string& path, double seconds) {
  tarvo::cScanner scanner(path);
  tarvo::cSubscription scans = scanner.subscribe(1);
  takeScan(scans, scanner);
  scanner.stop();
  cTracedRun::markBegin();
  std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
  cTracedRun::markEnd();
}

void measureSystemCalls(const cPlan& plan, cReport& report) {
  const std::size_t bytes = makeScanRecord(std::string(SCAN_COMMAND) + ";1").size();
  const std::size_t reads = (bytes + 11) / 12;
  // A poll and a read for each 12 bytes, and a few calls to wake the caller.
  const auto bound = static_cast<double>(2 * reads + 6);
  for (const cReaderKind& kind : readerKinds()) {
    const double calls = countCalls(kind, plan.tracedScans);
    report.addReaderFigure(kind.name, "system_calls_per_record", calls);
    if (kind.name != "library") continue;
    report.addRow("syscalls_per_record_over_bound", calls / bound, eGoal::AT_MOST, 1.0);
  }
  report.addRow("idle_syscalls_per_s", countIdleCalls("--traced-idle", plan.idleSeconds),
                eGoal::AT_MOST, 0);
  report.addRow("scanner_stopped_syscalls_per_s",
                countIdleCalls("--traced-stopped", plan.idleSeconds), eGoal::AT_MOST, 0);
}
