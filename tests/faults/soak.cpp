// Four simulated sensors at 40 Hz for as long as one likes, with faults that come and go: every
// scan sent is delivered as it was measured, or lost to the fault that was on; and the process
// stays as small as it was.
//   faults_soak SECONDS
#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <map>
#include <mutex>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "sim/tarvosim.h"
#include "tests/support/driving.h"

namespace {

using cClock = std::chrono::steady_clock;

constexpr int SENSORS = 4;
constexpr int LAST = 1080;
constexpr int FAR = 60000;
constexpr long RSS_GROWTH = 8192;     // kB after the warm-up: buffers of the C library
constexpr int FAULTS_OF_A_LIFE = 10;  // then sensor and driver are made anew

// The harm that sums, lengths and the number of points tell.
const std::vector<eSimFault> FAULTS = {
    eSimFault::GARBAGE,      eSimFault::LOST_BYTES,     eSimFault::WRONG_SUM,
    eSimFault::CUT_SHORT,    eSimFault::LOST_LINE_FEED, eSimFault::LOST_LINE,
    eSimFault::LOST_END,     eSimFault::DOUBLED_LINE,   eSimFault::EMPTY_STATUS,
    eSimFault::CR_LF,        eSimFault::STATUS,         eSimFault::OTHER_ECHO,
    eSimFault::OTHER_TAG,    eSimFault::WRONG_COUNT,    eSimFault::UNSOLICITED,
    eSimFault::ENDLESS_BODY, eSimFault::STALL,          eSimFault::BURSTS};

struct cTally {
  std::uint64_t sent = 0;
  std::uint64_t delivered = 0;
  std::uint64_t told = 0;                     // delivered with another number of points
  std::uint64_t untrue = 0;                   // delivered, and not what was measured
  std::uint64_t unexplained = 0;              // lost while no fault was on
  std::map<std::string, std::uint64_t> lost;  // by the fault that was
};

std::mutex tallyMutex;
cTally tally;  // under tallyMutex

const char* nameOf(eSimFault fault) {
  for (const cSimFaultInfo& info : simFaultTable())
    if (info.fault == fault) return info.name;
  return "none";
}

/// One sensor and its driver, from opening to the end.
class cLife {
 public:
  explicit cLife(std::mt19937& lots) : random(lots) {
    if (startScan() < 0) throw std::runtime_error("a healthy sensor's scan does not start");
  }

  void live(cClock::time_point end) {
    take(500);
    for (int fault = 0; fault < FAULTS_OF_A_LIFE && cClock::now() < end; ++fault) {
      bear(FAULTS[random() % FAULTS.size()]);
    }
    if (random() % 2 == 0) {
      windows.push_back({"unplugged", sensor.getCounters().scans, UINT64_MAX});
      windows.back().first -= std::min<std::uint64_t>(windows.back().first, 8);  // not read yet
      sensor.unplug();
      take(100);
    } else if (!stopLeftScan(*driver)) {
      throw std::runtime_error("a healthy sensor does not stop");
    }
    take(0);
    account(sensor.getCounters().scans);
  }

 private:
  struct cWindow {
    const char* fault;
    std::uint64_t first;
    std::uint64_t last;
  };

  static cSimSetting setting() {
    cSimSetting longRange;
    longRange.model = eSimModel::LONG_RANGE;
    return longRange;
  }

  int startScan() {
    return surely(*driver, [&] { return driver->startScan(0, LAST, 1, 0, 0, FAR); });
  }

  void bear(eSimFault fault) {
    const std::uint64_t first = sensor.getCounters().scans;
    sensor.setFault(fault, cSimSensor::DEFAULT_VALUE, "scan");
    take(static_cast<int>(200 + random() % 600));
    sensor.clearFault(fault);
    // The scan before may be glued to the first harmed one; one more is on its way, and another is
    // glued to that.
    windows.push_back(
        {nameOf(fault), first - std::min<std::uint64_t>(first, 1), sensor.getCounters().scans + 2});
    take(static_cast<int>(500 + random() % 1500));
  }

  void take(int milliseconds) {
    const auto end = cClock::now() + std::chrono::milliseconds(milliseconds);
    do {
      try {
        if (milliseconds > 0) driver->waitScan(50);
        while (driver->getScanNum() > 0) judge(distancesOf(driver->getScanFirst()));
      } catch (const std::out_of_range&) {
        ++toldHere;
      }
    } while (cClock::now() < end);
  }

  void judge(const std::vector<int>& distances) {
    if (distances.size() != LAST + 1) {
      ++toldHere;
      return;
    }
    for (std::uint64_t i = next; sensor.waitForSentScans(i + 1, std::chrono::seconds(1)); ++i) {
      if (i > next + 200) break;
      if (sensor.getTrueDistances(sensor.getSentScans().at(i), 0, LAST, 1) != distances) continue;
      account(i);
      ++next;
      std::lock_guard<std::mutex> lock(tallyMutex);
      ++tally.sent;
      ++tally.delivered;
      return;
    }
    std::lock_guard<std::mutex> lock(tallyMutex);
    ++tally.untrue;
  }

  /// Scans up to that one did not come: to each its reason, once the fault's window is known.
  void account(std::uint64_t end) {
    for (; next < end; ++next) missing.push_back(next);
  }

 public:
  ~cLife() {
    std::lock_guard<std::mutex> lock(tallyMutex);
    for (const std::uint64_t scan : missing) {
      const auto window = std::find_if(windows.begin(), windows.end(), [scan](const cWindow& one) {
        return one.first <= scan && scan <= one.last;
      });
      ++(window == windows.end() ? tally.unexplained : tally.lost[window->fault]);
      ++tally.sent;
    }
    tally.told += toldHere;
  }
  cLife(const cLife&) = delete;
  cLife& operator=(const cLife&) = delete;

 private:
  std::mt19937& random;
  cSimSensor sensor{setting()};
  tDriver2 driver = openReady(sensor.getPath());
  std::uint64_t next = 0;  // the scan that is expected
  std::uint64_t toldHere = 0;
  std::vector<std::uint64_t> missing;
  std::vector<cWindow> windows;
};

struct cSize {
  long rss = 0;  // kB
  int descriptors = 0;
  int threads = 0;
};

cSize measure() {
  malloc_trim(0);
  long pages = 0;
  std::ifstream statm("/proc/self/statm");
  statm >> pages >> pages;
  const std::filesystem::directory_iterator descriptors("/proc/self/fd");
  return {pages * sysconf(_SC_PAGESIZE) / 1024, static_cast<int>(std::distance(descriptors, {})),
          countThreads()};
}

void print(const std::string& when) {
  const cSize size = measure();
  std::lock_guard<std::mutex> lock(tallyMutex);
  std::cout << when << ": " << tally.sent << " sent, " << tally.delivered << " delivered, "
            << tally.unexplained << " lost without a fault, " << tally.untrue << " untrue, "
            << tally.told << " told by their size; " << size.rss << " kB, " << size.descriptors
            << " descriptors, " << size.threads << " threads; lost to";
  for (const auto& [fault, count] : tally.lost) std::cout << ' ' << fault << ' ' << count;
  std::cout << std::endl;
}

/// Lives one after the other on each of the sensors until then; a line a minute.
void soak(cClock::time_point end) {
  std::vector<std::thread> threads;
  for (unsigned seed = 1; seed <= SENSORS; ++seed) {
    threads.emplace_back([seed, end] {
      std::mt19937 random(seed);
      while (cClock::now() < end) cLife(random).live(end);
    });
  }
  for (int minute = 1; cClock::now() + std::chrono::minutes(1) < end; ++minute) {
    std::this_thread::sleep_for(std::chrono::minutes(1));
    print("minute " + std::to_string(minute));
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace

int main(int argc, char** argv) {
  const int seconds = argc > 1 ? std::atoi(argv[1]) : 0;
  if (seconds < 1) {
    std::fprintf(stderr, "usage: %s SECONDS\n", argv[0]);
    return 2;
  }
  const auto begin = cClock::now();
  soak(begin + std::chrono::seconds(std::min(seconds / 5 + 1, 60)));  // the warm-up
  const cSize before = measure();
  soak(begin + std::chrono::seconds(seconds));
  const cSize after = measure();
  print("all");
  const bool isFlat = after.rss <= before.rss + RSS_GROWTH &&
                      after.descriptors <= before.descriptors && after.threads <= before.threads;
  const bool isSound = isFlat && tally.untrue == 0 && tally.unexplained == 0 && tally.delivered > 0;
  std::printf("%s: %ld kB, %d descriptors, %d threads after the warm-up; %ld, %d, %d at the end\n",
              isSound ? "sound" : "FAILED", before.rss, before.descriptors, before.threads,
              after.rss, after.descriptors, after.threads);
  return isSound ? 0 : 1;
}
