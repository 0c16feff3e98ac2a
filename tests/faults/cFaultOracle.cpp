#include "tests/faults/cFaultOracle.h"

#include <malloc.h>
#include <unistd.h>

#include <algorithm>

namespace {

using cClock = std::chrono::steady_clock;

constexpr double SLACK = 100;            // milliseconds that a call may be late
constexpr double CORE = 0.05;            // of a core
constexpr double BEGINNING = 0.02;       // seconds of CPU that a call may take anyway
constexpr std::size_t MEMORY = 1 << 16;  // buffers of the C++ library
constexpr std::size_t LOGGED = 128;      // what the sensor remembers of a command or scan
constexpr double SANITIZED = IS_SANITIZED ? 10 : 1;  // times the CPU

long countDescriptors() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

}  // namespace

std::size_t countAllocated() {
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

cFaultOracle::cFaultOracle(const cSimSensor& sensed)
    : sensor(sensed),
      descriptors(countDescriptors()),
      threads(countThreads()),
      memory(countAllocated()) {}

cFaultOracle::~cFaultOracle() {
  EXPECT_TRUE(eventually([this] { return countThreads() <= threads; })) << "threads are left";
  EXPECT_LE(countDescriptors(), descriptors);
  const cSimCounters count = sensor.getCounters();
  EXPECT_LE(countAllocated(), memory + MEMORY + LOGGED * (count.commands + count.scans));
}

void cFaultOracle::during(const char* what, int milliseconds, const std::function<void()>& action) {
  const double starved = getStarvedSeconds();
  const double used = getProcessorSeconds();
  const auto begin = cClock::now();
  action();
  const double took = std::chrono::duration<double, std::milli>(cClock::now() - begin).count();
  const double patience = SLACK + 1e3 * std::max(getStarvedSeconds() - starved, 0.0);
  EXPECT_LE(took, milliseconds + patience) << what << " came back too late";
  EXPECT_LE(getProcessorSeconds() - used, SANITIZED * (BEGINNING + CORE * took / 1e3))
      << what << " took too much of a core in " << took << " ms";
}

bool cFaultOracle::judge(const std::vector<int>& distances, int patience) {
  if (distances.size() != POINTS) {
    ++told;
    return false;
  }
  const std::size_t noted = sensor.getCounters().scans;
  for (std::size_t i = next; i <= noted; ++i) {
    if (!sensor.waitForSentScans(i + 1, std::chrono::milliseconds(patience))) break;
    const std::uint32_t scan = sensor.getSentScans().at(i);
    if (sensor.getTrueDistances(scan, FIRST, LAST, 1) != distances &&
        sensor.getTrueDistances(scan, FIRST, LAST, 1, NEAR) != distances)
      continue;
    next = i + 1;
    ++truths;
    return true;
  }
  ++lies;
  return false;
}

void cFaultOracle::take(iSCIP2IF& driver, int patience) {
  while (driver.getScanNum() > 0) judge(distancesOf(driver.getScanFirst()), patience);
}

void cFaultOracle::tryTo(const std::function<void()>& action) {
  try {
    action();
  } catch (const std::out_of_range&) {
    ++told;
  }
}

void cFaultOracle::follow(iSCIP2IF& driver, const std::function<bool()>& condition) {
  const auto deadline = cClock::now() + LONG_TIME;
  while (!condition()) {
    ASSERT_LT(cClock::now(), deadline) << "what was waited for did not come";
    tryTo([&] {
      driver.waitScan(100);
      take(driver);
    });
  }
}

void cFaultOracle::expectTrueScan(iSCIP2IF& driver) {
  const int before = truths;
  follow(driver, [&] { return truths > before; });
}
