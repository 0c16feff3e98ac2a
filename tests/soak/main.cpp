// Simulated sensors at 40 Hz, with faults that come and go: two with a driver, two of each dialect
// with a scanner. Every scan sent must be delivered as it was measured, or lost while a fault was
// on; the scanners must come back; and the process must not grow.
//   tarvosoak SECONDS
#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>

#include "tests/soak/cDriverSession.h"
#include "tests/soak/cScannerSession.h"

namespace {

using cClock = cDriverSession::cClock;

constexpr unsigned SENSORS_OF_A_KIND = 2;
constexpr long RSS_GROWTH = 8192;  // kB after the warm-up, for buffers of the C library

cTally tally;

/// kB, descriptors, threads.
using tSize = std::array<long, 3>;

tSize measure() {
  malloc_trim(0);
  long pages = 0;
  std::ifstream("/proc/self/statm") >> pages >> pages;
  const std::filesystem::directory_iterator descriptors("/proc/self/fd");
  return {pages * sysconf(_SC_PAGESIZE) / 1024, std::distance(descriptors, {}), countThreads()};
}

std::string toText(const tSize& size) {
  return std::to_string(size[0]) + " kB, " + std::to_string(size[1]) + " descriptors, " +
         std::to_string(size[2]) + " threads";
}

bool isFlat(const tSize& before, const tSize& after) {
  return after[0] <= before[0] + RSS_GROWTH && after[1] <= before[1] && after[2] <= before[2];
}

/// Runs sessions one after the other on each of the sensors; prints a line a minute.
void soak(cClock::time_point end) {
  std::vector<std::thread> threads;
  const auto add = [&](const std::function<void(std::mt19937&)>& runSession) {
    threads.emplace_back([runSession, end, seed = static_cast<unsigned>(threads.size() + 1)] {
      std::mt19937 rng(seed);
      while (cClock::now() < end) runSession(rng);
    });
  };
  for (unsigned i = 0; i < SENSORS_OF_A_KIND; ++i) {
    add([end](std::mt19937& rng) { cDriverSession(rng, tally).run(end); });
    for (const eSimDialect dialect : {eSimDialect::SCIP2, eSimDialect::SCIP1})
      add([=](std::mt19937& rng) { cScannerSession(dialect, rng, tally).run(end); });
  }
  for (int minute = 1; cClock::now() + std::chrono::minutes(1) < end; ++minute) {
    std::this_thread::sleep_for(std::chrono::minutes(1));
    std::cout << "minute " << minute << ": " << tally << "; " << toText(measure()) << std::endl;
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace

int main(int argc, char** argv) {
  const int seconds = argc > 1 ? std::atoi(argv[1]) : 0;
  if (seconds < 1) {
    std::cerr << "usage: " << argv[0] << " SECONDS\n";
    return 2;
  }
  const auto begin = cClock::now();
  soak(begin + std::chrono::seconds(std::min(seconds / 5 + 1, 60)));  // the warm-up
  const tSize before = measure();
  soak(begin + std::chrono::seconds(seconds));
  const tSize after = measure();
  const bool passed = isFlat(before, after) && tally.passed();
  std::cout << "all: " << tally << '\n'
            << (passed ? "passed: " : "FAILED: ") << toText(before) << " after the warm-up; "
            << toText(after) << " at the end" << std::endl;
  return passed ? 0 : 1;
}
