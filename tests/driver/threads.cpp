#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "tests/driver/support.h"

namespace {

/// Runs every job in a thread of its own and joins them all.
void together(const std::vector<std::function<void()>>& jobs) {
  std::vector<std::thread> threads;
  for (const auto& job : jobs) threads.emplace_back(job);
  for (std::thread& thread : threads) thread.join();
}

// Would catch: an answer that reaches another caller, or none.
TEST(cManyCallers, EachGetItsOwnAnswers) {
  cSimSensor sensor(quick());
  const tDriver2 driver = openDriver(sensor.getPath());
  std::atomic<int> wrong{0};
  std::vector<std::function<void()>> jobs;
  for (const auto& [command, mark] : std::vector<std::pair<std::string, std::string>>{
           {"VV", "VEND:"}, {"PP", "MODL:"}, {"II", "STAT:"}, {"QT", ""}, {"VV", "SERI:"}}) {
    jobs.push_back([&, command = command, mark = mark] {
      for (int i = 0; i < 300; ++i) {
        const boost::shared_ptr<cSCIPRecord> answer = driver->doRaw2(command, 1);
        const bool isOwn = answer->error == 0 && answer->echo.substr(0, 3) == command + ";" &&
                           answer->body.find(mark) != std::string::npos;
        if (!isOwn) ++wrong;
      }
    });
  }
  together(jobs);
  EXPECT_EQ(wrong, 0);
  EXPECT_EQ(sensor.getCounters().commands, 1500U);
}

// Would catch: a race between what the worker writes and what callers read, scans lost or
// doubled where two threads take them.
TEST(cManyCallers, ScanAndAskAtOnce) {
  constexpr int SCANS = 99;
  cSimSensor sensor(quick());
  const tDriver2 driver = openReady(sensor.getPath());
  ASSERT_EQ(driver->startScan(44, 725, 1, 0, SCANS, 5600), 0);
  std::atomic<int> taken{0};
  std::atomic<int> failed{0};
  const auto take = [&] {
    while (taken < SCANS && driver->isScanning()) {
      driver->waitScan(100);
      if (driver->getScanFirst()) ++taken;
    }
  };
  const auto ask = [&] {
    for (int i = 0; i < 30; ++i) {
      if (driver->fetchVersionStr() != 0 || driver->fetchParameters() != 0 ||
          driver->updateStatus() != 0) {
        ++failed;
      }
      driver->getResponseBody();
      driver->getScanNum();
    }
  };
  const auto start = [&] {  // refused, but it asks for the parameters that others fetch
    for (int i = 0; i < 10; ++i) driver->startScan(44, 9999, 1, 0, 0, 5600);
  };
  together({take, take, ask, ask, start});
  EXPECT_EQ(taken, SCANS);
  EXPECT_EQ(failed, 0);
}

}  // namespace
