#include "tests/driver/support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <iterator>
#include <system_error>
#include <thread>

namespace {

// A session leader that opens a tty may get it as its terminal, and with it SIGHUP.
[[maybe_unused]] const auto ignored = std::signal(SIGHUP, SIG_IGN);

int countEntries(const char* folder) {
  return static_cast<int>(std::distance(std::filesystem::directory_iterator(folder), {}));
}

}  // namespace

cSimSetting quick(eSimModel model) {
  cSimSetting setting;
  setting.model = model;
  setting.rate = 200;
  return setting;
}

boost::shared_ptr<cTarvoLink> openLink(const std::string& path) {
  const boost::shared_ptr<kavTBX::basic_portbuf<char>> port(
      new kavTBX::basic_portbuf<char>(path, boost::shared_ptr<kavTBX::cPortSetting>()));
  port->readTimeout = 300;
  return boost::shared_ptr<cTarvoLink>(new cTarvoLink(port));
}

tDriver2 openDriver(const std::string& path) {
  const tDriver2 driver(new cSensorDriverSCIP2(openLink(path)));
  driver->start();
  return driver;
}

tDriver2 openReady(const std::string& path) {
  const tDriver2 driver = openDriver(path);
  EXPECT_EQ(driver->fetchParameters(), 0);
  return driver;
}

tScan takeScan(iSCIP2IF& driver) {
  const tScan waiting = driver.getScanFirst();
  if (waiting || !driver.waitScan(LONG)) return waiting;
  return driver.getScanFirst();
}

bool stopLeftScan(iSCIP2IF& driver) {
  for (int attempt = 0; attempt < 10; ++attempt) {
    if (driver.stopAll() == 0) return true;
  }
  return false;
}

std::vector<int> distancesOf(const tScan& scan) {
  std::vector<int> distances;
  if (!scan) return distances;
  std::transform(scan->points.begin(), scan->points.end(), std::back_inserter(distances),
                 [](const cScanPoint& point) { return static_cast<int>(point.distance); });
  return distances;
}

std::vector<int> truth(const cSimSensor& sensor, std::size_t index, int first, int last,
                       int cluster, int most) {
  // The host has a scan a moment before the sensor has noted it as sent.
  if (!sensor.waitForSentScans(index + 1, LONG_TIME)) return {};
  return sensor.getTrueDistances(sensor.getSentScans().at(index), first, last, cluster, most);
}

cOutput outputOf(const std::function<void()>& action) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  action();
  cOutput output;
  output.out = testing::internal::GetCapturedStdout();
  output.err = testing::internal::GetCapturedStderr();
  return output;
}

bool eventually(const std::function<bool()>& condition) {
  const auto deadline = std::chrono::steady_clock::now() + LONG_TIME;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return true;
}

int countOpen(const std::string& path) {
  int count = 0;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code gone;  // the listing's own descriptor is
    if (std::filesystem::read_symlink(entry, gone) == path) ++count;
  }
  return count;
}

int countDescriptors() { return countEntries("/proc/self/fd"); }

int countThreads() { return countEntries("/proc/self/task"); }
