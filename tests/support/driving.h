#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <climits>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "tarvolink/tarvolink.h"
#include "tests/support/settings.h"
#include "tests/support/waiting.h"

using tPort = boost::shared_ptr<kavTBX::basic_portbuf<char>>;
using tLink = boost::shared_ptr<cTarvoLink>;
using tDriver = boost::shared_ptr<cSensorDriver>;
using tDriver2 = boost::shared_ptr<cSensorDriverSCIP2>;
using tScan = boost::shared_ptr<cScan>;

/// A session leader that opens a tty may get it as its terminal, and with it SIGHUP.
[[maybe_unused]] inline const auto IGNORED = std::signal(SIGHUP, SIG_IGN);

/// What `action` printed.
struct cOutput {
  std::string out, err;
};
inline cOutput outputOf(const std::function<void()>& action) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  action();
  return {testing::internal::GetCapturedStdout(), testing::internal::GetCapturedStderr()};
}

/// A port whose reads wait for `timeout` milliseconds.
inline tPort openPort(const std::string& path, int timeout = 300) {
  tPort port(new kavTBX::basic_portbuf<char>(path, {}));
  port->readTimeout = timeout;
  return port;
}

inline tLink openLink(const std::string& path, int timeout = 300) {
  return tLink(new cTarvoLink(openPort(path, timeout)));
}

/// A running driver without a detection: nothing was sent, the next tag is 1.
inline tDriver2 openDriver(const std::string& path, int timeout = 300) {
  tDriver2 driver(new cSensorDriverSCIP2(openLink(path, timeout)));
  driver->start();
  return driver;
}

/// The same with the parameters fetched (tag 1), so that it can scan.
inline tDriver2 openReady(const std::string& path) {
  tDriver2 driver = openDriver(path);
  EXPECT_EQ(driver->fetchParameters(), 0);
  return driver;
}

/// Sends "QT" until its answer is clean, as a host does on a sensor that somebody left scanning.
inline bool stopLeftScan(iSCIP2IF& driver) {
  for (int attempt = 0; attempt < 10; ++attempt) {
    if (driver.stopAll() == 0) return true;
  }
  return false;
}

/// The result of `start`. One below 0 is tried again, but only if this process waited for a
/// processor for half of the 200 ms that the library gives a sensor to accept a start.
inline int retryIfStarved(iSCIP2IF& driver, const std::function<int()>& start) {
  for (;;) {
    const double starved = getStarvedSeconds();
    const int result = start();
    // A wait for a processor is counted when it is over: at the latest with the answer to "QT".
    if (result >= 0 || !stopLeftScan(driver) || getStarvedSeconds() - starved < 0.1) return result;
  }
}

/// Starts a scan of a sensor that accepts it, again if starved; how many scans it had sent before.
inline std::size_t startRetrying(const cSimSensor& sensor, iSCIP2IF& driver, int first, int last,
                                 int cluster, int scans, int longest) {
  std::size_t sent = 0;
  const int result = retryIfStarved(driver, [&] {
    sent = sensor.getSentScans().size();
    return driver.startScan(first, last, cluster, 0, scans, longest);
  });
  if (result < 0) throw std::runtime_error("a healthy sensor's scan does not start");
  return sent;
}

/// Takes the oldest scan, waiting for one; empty if none comes.
inline tScan takeScan(iSCIP2IF& driver) {
  tScan scan = driver.getScanFirst();
  for (int waits = 0; !scan && waits < LONG / 100; ++waits) {
    driver.waitScan(100);
    scan = driver.getScanFirst();
  }
  return scan;
}

inline std::vector<int> distancesOf(const tScan& scan) {
  std::vector<int> distances;
  if (!scan) return distances;
  for (const cScanPoint& point : scan->points)
    distances.push_back(static_cast<int>(point.distance));
  return distances;
}

/// What the sensor measured in the scan that it sent as number `index`, from 0.
inline std::vector<int> truth(const cSimSensor& sensor, std::size_t index, int first, int last,
                              int cluster = 1, int most = INT_MAX) {
  // The host has a scan a moment before the sensor has noted it as sent.
  if (!sensor.waitForSentScans(index + 1, LONG_TIME)) return {};
  return sensor.getTrueDistances(sensor.getSentScans().at(index), first, last, cluster, most);
}

/// Descriptors of this process that stand for `path`.
inline int countOpen(const std::string& path) {
  int count = 0;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code gone;  // the listing's own descriptor is
    if (std::filesystem::read_symlink(entry, gone) == path) ++count;
  }
  return count;
}

inline int countThreads() {
  return static_cast<int>(
      std::distance(std::filesystem::directory_iterator("/proc/self/task"), {}));
}
