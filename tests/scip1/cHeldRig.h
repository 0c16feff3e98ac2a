#pragma once

#include <algorithm>
#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>

#include "tests/support/cScriptedSensor.h"

using tNumbers = std::vector<int>;

/// A record of SCIP 1.x; `body` is lines with their ends.
inline std::string record(const std::string& echo, const std::string& status,
                          const std::string& body = "") {
  return echo + "\n" + status + "\n" + body + "\n";
}

/// The number of a held sensor's scan; -1 of none.
inline int numberOf(const tScan& scan) {
  if (!scan) return -1;
  return static_cast<int>(scan->points.at(0).distance * 4096 + scan->points.at(1).distance);
}

/// A driver, whose reads wait 10 s unless a test changes that, and a SCIP 1.x sensor in the test's
/// hands: answers can be held back, or be written byte for byte. Left alone it accepts every
/// command; scan number n, counted from 0, has two points, n / 4096 and n % 4096.
class cHeldRig {
 public:
  /// @param speed bits/s of a real line; 0: bytes take no time
  explicit cHeldRig(int speed = 0)
      : sensor([this](const std::string& command) { return answer(command); }, speed) {}
  /// Releases an answer held back, for which the driver may be waiting.
  ~cHeldRig() { allowAnswers(-1); }

  /// Answers commands that begin with `prefix` by `bytes`; "": by itself again.
  void script(const std::string& prefix, const std::string& bytes) {
    std::lock_guard<std::mutex> lock(mutex);
    scripts[prefix] = bytes;
  }

  /// Answers only `count` commands more, added to what was left; below 0: all again.
  void allowAnswers(int count) {
    std::lock_guard<std::mutex> lock(mutex);
    answersLeft = count < 0 ? count : std::max(answersLeft, 0) + count;
    changed.notify_all();
  }

  /// Whether `count` commands that begin with `prefix` arrive, answered or not.
  bool hears(const std::string& prefix, std::size_t count) {
    return sensor.waitForCommand(prefix, LONG_TIME, count);
  }

  /// Scans of two points, steps 0 to 1, back to back.
  int startTwoPoints(int count) { return scip2.startScan(0, 1, 1, 0, count, 4095); }
  /// Whether scanning ends after `count` requests of a scan.
  bool isOverAfter(std::size_t count) {
    return hears("G", count) && eventually([this] { return !scip2.isScanning(); });
  }
  /// The numbers of the scans in the list, which is empty afterwards.
  tNumbers takeAll() {
    tNumbers numbers;
    while (const tScan scan = scip2.getScanFirst()) numbers.push_back(numberOf(scan));
    return numbers;
  }

 private:
  std::string answer(const std::string& command) {
    std::unique_lock<std::mutex> lock(mutex);
    changed.wait(lock, [this] { return answersLeft != 0; });
    if (answersLeft > 0) --answersLeft;
    for (const auto& [prefix, bytes] : scripts) {
      if (!bytes.empty() && command.rfind(prefix, 0) == 0) return bytes;
    }
    return record(command, "0", command[0] == 'G' ? getScan() : "");
  }

  std::string getScan() {
    const int number = scans++;
    const auto digit = [=](int shift) { return static_cast<char>((number >> shift & 63) + 0x30); };
    return {digit(18), digit(12), digit(6), digit(0), '\n'};
  }

  std::mutex mutex;  // guards the three below
  std::condition_variable changed;
  std::map<std::string, std::string> scripts;
  int answersLeft = -1;
  int scans = 0;

 public:
  cScriptedSensor sensor;
  tPort port = openPort(sensor.getPath(), 10000);
  tLink link{new cTarvoLink(port)};
  std::unique_ptr<cSensorDriverSCIP1> driver{new cSensorDriverSCIP1(link)};
  iSCIP2IF& scip2 = *driver->getSCIP2IF();
};

/// With one such rig.
class Scip1 : public testing::Test {
 protected:
  cHeldRig rig;
  iSCIP2IF& scip2 = rig.scip2;
};
