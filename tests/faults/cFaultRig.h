#pragma once

#include <algorithm>
#include <ctime>

#include "tests/support/driving.h"

// What every fault test asks for, and the waits that its calls may take, in milliseconds.
constexpr int FIRST = 44;
constexpr int LAST = 143;
constexpr std::size_t POINTS = LAST - FIRST + 1;
constexpr int FAR = 5600;     // asks for three characters a reading
constexpr int NEAR = 4095;    // for two
constexpr int READ = 300;     // a read under way, before a command's line is written
constexpr int ANSWER = 2000;  // an answer of SCIP 2.0

constexpr auto SCIP1 = eSimDialect::SCIP1;
constexpr auto SCIP2 = eSimDialect::SCIP2;

// A sanitizer takes more CPU, and has an allocator of its own; an emulator takes more, too
// (cmake/arm64.cmake says so).
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || defined(TARVOLINK_EMULATED)
constexpr bool IS_SLOW = true;
#else
constexpr bool IS_SLOW = false;
#endif

/// A sensor, a driver for it, and what holds whatever the far end of the cable does: no crash, no
/// call that hangs or is late, no wrong scan where sums, lengths or the number of points flag it,
/// hardly any CPU while the fault lasts, nothing left behind.
class cFaultRig {
 public:
  /// @param opens  whether there is a driver from the beginning, without a detection
  explicit cFaultRig(const cSimSetting& setting, bool opens = true) : sensor(setting) {
    if (!opens) return;
    if (setting.dialect == SCIP2)
      driver = openReady(sensor.getPath());
    else
      driver.reset(new cSensorDriverSCIP1(openLink(sensor.getPath())));
  }
  /// The end: no more descriptors and threads than before there was a driver. What memory leaks,
  /// the address sanitizer tells.
  ~cFaultRig() {
    driver.reset();
    EXPECT_TRUE(eventually([this] { return countThreads() <= threads; })) << "threads are left";
    EXPECT_LE(countDescriptors(), descriptors);
  }

  iSCIP2IF& face() { return *driver->getSCIP2IF(); }

  /// FIRST to LAST, without end if `count` is 0.
  int startScan(int count = 0, int most = FAR, int interval = 0) {
    const auto start = [&] { return face().startScan(FIRST, LAST, 1, interval, count, most); };
    return retryIfStarved(face(), start);
  }

  /// Starts a scan and waits for the first of it.
  void scan(int count = 0, int most = FAR, int interval = 0) {
    startScan(count, most, interval);
    expectCorrectScan();
  }

  /// `action` ends within so many milliseconds (and 100, and what this process waited for a
  /// processor), and all threads, the sensor's too, use less than 5 % of a core meanwhile.
  void during(const char* what, int milliseconds, const std::function<void()>& action) {
    const double starved = getStarvedSeconds();
    const std::clock_t used = std::clock();
    const double took = static_cast<double>(measure(action)) / 1e3;
    const double tolerance = 0.1 + std::max(getStarvedSeconds() - starved, 0.0);
    EXPECT_LE(took, milliseconds / 1e3 + tolerance) << what << " came back too late";
    EXPECT_LE(static_cast<double>(std::clock() - used) / CLOCKS_PER_SEC,
              (IS_SLOW ? 10 : 1) * (0.02 + 0.05 * took))
        << what << " took too much of a core in " << took << " s";
  }

  /// Takes what scans there are and counts each: as correct if it was sent after those before; as
  /// flagged if its number of points gives it away; or as wrong.
  void take() {
    while (face().getScanNum() > 0) {
      const std::vector<int> distances = distancesOf(face().getScanFirst());
      ++(distances.size() != POINTS ? flagged : isCorrect(distances) ? correct : wrong);
    }
  }

  /// Takes scans until the condition holds. What throws flags damage.
  void follow(const std::function<bool()>& condition) {
    const auto deadline = std::chrono::steady_clock::now() + LONG_TIME;
    while (!condition()) {
      ASSERT_LT(std::chrono::steady_clock::now(), deadline) << "what was waited for did not come";
      tryTo([&] {
        face().waitScan(100);
        take();
      });
    }
  }

  /// The next scan that comes is correct, or one of the few after it.
  void expectCorrectScan() {
    const int before = correct;
    follow([&] { return correct > before; });
  }

  /// Does it; that it throws flags damage.
  void tryTo(const std::function<void()>& action) {
    try {
      action();
    } catch (const std::out_of_range&) {
      ++flagged;
    }
  }

  cSimSensor sensor;
  tDriver driver;
  int correct = 0;
  int flagged = 0;
  int wrong = 0;

 private:
  static long countDescriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
  }

  bool isCorrect(const std::vector<int>& distances) {
    // The host has a scan a moment before the sensor has noted it as sent.
    const std::size_t noted = sensor.getCounters().scans;
    for (std::size_t i = next; i <= noted; ++i) {
      for (const int most : {INT_MAX, NEAR}) {
        if (truth(sensor, i, FIRST, LAST, 1, most) != distances) continue;
        next = i + 1;
        return true;
      }
    }
    return false;
  }

  const long descriptors = countDescriptors();
  const int threads = countThreads();
  std::size_t next = 0;  // the first scan sent that may still come
};
