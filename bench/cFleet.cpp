#include "bench/cFleet.h"

#include <chrono>
#include <future>
#include <thread>

#include "bench/cDriverReader.h"
#include "bench/cScannerReader.h"
#include "bench/measure.h"

namespace {

constexpr double WARM_UP = 0.5;       // seconds
constexpr double START_TIMEOUT = 10;  // seconds until all scan
constexpr double START_STEP = 0.02;
constexpr std::size_t DEPTH = 16;  // scans that wait for a thread

void sleepFor(double seconds) {
  std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
}

}  // namespace

cUsage cFleet::scan(std::size_t count, double seconds) {
  stopping = false;
  started = 0;
  const std::uint64_t before = delivered;
  const std::uint64_t missingBefore = missing;
  std::vector<std::future<void>> takers;
  for (std::size_t i = 0; i < count; ++i) {
    takers.push_back(std::async(std::launch::async, [this, i] { takeAll(i); }));
  }
  const double deadline = now() + START_TIMEOUT;
  while (started < count && now() < deadline) sleepFor(START_STEP);
  sleepFor(WARM_UP);
  cUsage usage = watch(seconds);
  stopping = true;
  for (std::future<void>& taker : takers) taker.get();
  usage.delivered = delivered - before;
  usage.missing = missing - missingBefore;
  return usage;
}

cUsage cFleet::watch(double seconds) const {
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

cDriverFleet::cDriverFleet(const cSimHost& host) {
  for (const std::string& path : host.getPaths()) drivers.push_back(createDriver(path));
}

void cDriverFleet::takeAll(std::size_t index) {
  cSensorDriver& driver = *drivers[index];
  iSCIP2IF& scanner = *driver.getSCIP2IF();
  startEndlessScan(driver);
  countStart();
  for (; !isStopping(); countScan()) takeScan(scanner);
  scanner.abortScan();
  while (scanner.getScanFirst()) countScan();
}

void cScannerFleet::takeAll(std::size_t index) {
  tarvo::cScanner scanner(paths[index]);
  tarvo::cSubscription scans = scanner.subscribe(DEPTH);
  tarvo::tScanPtr scan = takeScan(scans, scanner);
  countStart();
  countScan();
  for (; !isStopping(); countScan()) {
    const std::uint64_t before = scan->number;
    scan = takeScan(scans, scanner);
    countMissing(scan->number - before - 1);
  }
}
