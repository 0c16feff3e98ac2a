#pragma once

#include <algorithm>
#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "tests/support/driving.h"

/// A record of SCIP 1.x; `body` is lines with their ends.
inline std::string record(const std::string& echo, const std::string& status,
                          const std::string& body = "") {
  return echo + "\n" + status + "\n" + body + "\n";
}

/// A SCIP 1.x sensor in a test's hands: answers can be held back, or be written byte for byte.
/// Left alone it accepts every command; the points of its scan number n, counted from 0, say
/// n / 4096 and n % 4096 by turns.
class cHeldSensor {
 public:
  /// @param speed bits/s of a real line; 0: bytes take no time
  explicit cHeldSensor(int speed) {
    cSimSetting setting;
    setting.speed = speed;
    setting.onCommand = [this](const std::string& command) { answer(command); };
    std::lock_guard<std::mutex> lock(mutex);
    sensor = std::make_unique<cSimSensor>(setting);
    sensor->setFault(eSimFault::NO_ANSWER);
  }
  /// Lets go of the answer held back, so that its own thread ends.
  ~cHeldSensor() { letGo(-1); }

  std::string getPath() const { return sensor->getPath(); }
  std::vector<std::string> getCommands() const { return sensor->getCommands(); }
  void say(const std::string& bytes) { sensor->say(bytes); }

  /// Pulls the cable while scans are asked for, but not within a scan's answer: half of one would
  /// end the process. The scans before it are refused.
  void unplug() {
    script("G", record("G", "1"));
    hears("G", countCommands("G") + 2);
    sensor->unplug();
  }

  /// Says `bytes` to commands that begin with `prefix`; "": answers them itself again.
  void script(const std::string& prefix, const std::string& bytes) {
    std::lock_guard<std::mutex> lock(mutex);
    scripts[prefix] = bytes;
  }

  /// Answers this many commands more, and then none until told again; below 0: all.
  void letGo(int count) {
    std::lock_guard<std::mutex> lock(mutex);
    answersLeft = count;
    changed.notify_all();
  }
  void addAnswer() {
    std::lock_guard<std::mutex> lock(mutex);
    ++answersLeft;
    changed.notify_all();
  }

  /// Whether `count` commands that begin with `prefix` are heard, answered or not.
  bool hears(const std::string& prefix, std::size_t count) {
    return sensor->waitForCommand(prefix, LONG_TIME, count);
  }
  /// Whether this many answers, or `say`, have left.
  bool hasSaid(std::uint64_t count) {
    return sensor->waitFor(&cSimCounters::records, count, LONG_TIME);
  }
  std::size_t countCommands(const std::string& prefix) const {
    const std::vector<std::string> all = getCommands();
    return static_cast<std::size_t>(
        std::count_if(all.begin(), all.end(),
                      [&](const std::string& command) { return command.rfind(prefix, 0) == 0; }));
  }

 private:
  void answer(const std::string& command) {
    std::unique_lock<std::mutex> lock(mutex);
    changed.wait(lock, [this] { return answersLeft != 0; });
    if (answersLeft > 0) --answersLeft;
    for (const auto& [prefix, bytes] : scripts) {
      if (!bytes.empty() && command.rfind(prefix, 0) == 0) return sensor->say(bytes);
    }
    sensor->say(record(command, "0", command[0] == 'G' ? getScan(command) : ""));
  }

  std::string getScan(const std::string& command) {
    const int points = std::stoi(command.substr(4, 3)) - std::stoi(command.substr(1, 3)) + 1;
    std::string data;
    for (int i = 0; i < points; ++i) {
      const int value = i % 2 == 0 ? scans / 4096 : scans % 4096;
      data += static_cast<char>(value / 64 + 0x30);
      data += static_cast<char>(value % 64 + 0x30);
    }
    ++scans;
    for (std::size_t end = 64; end < data.size(); end += 65) data.insert(end, "\n");
    return data + "\n";
  }

  std::mutex mutex;  // guards all below but what `sensor` points to
  std::condition_variable changed;
  std::map<std::string, std::string> scripts;
  int answersLeft = -1;
  int scans = 0;
  std::unique_ptr<cSimSensor> sensor;
};

/// The number of a held sensor's scan; -1 of none.
inline int numberOf(const tScan& scan) {
  if (!scan) return -1;
  return static_cast<int>(scan->points.at(0).distance * 4096 + scan->points.at(1).distance);
}

/// A held sensor with a driver on it, whose reads wait 10 s unless told otherwise.
struct cRig {
  explicit cRig(int speed = 0) : sensor(speed) {}
  /// Lets go of an answer held back, for which the driver may be waiting.
  ~cRig() { sensor.letGo(-1); }

  /// The adapter, made when first asked for.
  iSCIP2IF& scip2() {
    if (face == nullptr) face = driver->getSCIP2IF();
    return *face;
  }
  /// Waits until the worker does not scan any more.
  bool waitForIdle() {
    return eventually([this] { return !scip2().isScanning(); });
  }
  /// The numbers of the scans in the list, which is empty afterwards.
  std::vector<int> takeAll() {
    std::vector<int> numbers;
    while (const tScan scan = scip2().getScanFirst()) numbers.push_back(numberOf(scan));
    return numbers;
  }

  cHeldSensor sensor;
  tPort port = openPort(sensor.getPath(), 10000);
  tLink link{new cTarvoLink(port)};
  std::unique_ptr<cSensorDriverSCIP1> driver{new cSensorDriverSCIP1(link)};

 private:
  iSCIP2IF* face = nullptr;
};
