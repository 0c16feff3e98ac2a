#include <gtest/gtest.h>

#include <atomic>

#include "tests/support/driving.h"

// Would catch: a race between what the worker writes and what callers read, scans lost or
// doubled where two threads take them.
TEST(ManyCallers, ScanAndAskAtOnce) {
  constexpr int SCANS = 99;
  const cSimSensor sensor(quick());
  const tDriver2 driver = openReady(sensor.getPath());
  startSurely(sensor, *driver, 44, 725, 1, SCANS, 5600);
  std::atomic<int> taken{0};
  std::atomic<int> failed{0};
  const auto take = [&] {
    while (taken < SCANS) {
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
  std::thread others[] = {std::thread(take), std::thread(take), std::thread(ask),
                          std::thread(start)};
  ask();
  for (std::thread& other : others) other.join();
  EXPECT_EQ(taken, SCANS);
  EXPECT_EQ(failed, 0);
}

// Would catch: what two drivers of one process share.
TEST(TwoSensors, KeepTheirScansApart) {
  const cSimSensor one(quick(eSimModel::SHORT_RANGE));
  const cSimSensor other(quick(eSimModel::LONG_RANGE));
  const tDriver2 first = openReady(one.getPath());
  const tDriver2 second = openReady(other.getPath());
  const std::size_t ofOne = startSurely(one, *first, 44, 725, 1, 50, 5600);
  const std::size_t ofOther = startSurely(other, *second, 0, 1080, 1, 50, 60000);
  for (std::size_t i = 0; i < 50; ++i) {
    ASSERT_EQ(distancesOf(takeScan(*first)), truth(one, ofOne + i, 44, 725));
    ASSERT_EQ(distancesOf(takeScan(*second)), truth(other, ofOther + i, 0, 1080));
  }
}
