#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "tests/scip1/cHeldSensor.h"

// Catches: an answer read by the other thread, half of it read, a caller who never gets a turn.
TEST(Scip1Threads, CommandsBesideAScanTakeTurns) {
  const std::string version = "VEND:maker;\nPROD:scanner;\n";
  constexpr std::size_t SCAN_SIZE = 681 * 2 + 22;  // with a line feed each 64 characters
  cRig rig;
  rig.sensor.script("V", record("V", "0", version));
  rig.sensor.script("X", record("X", "7", "other\n"));
  rig.scip2().startScan(44, 724, 1, 0, 0, 0);
  std::thread other([&rig] {
    for (int i = 0; i < 100; ++i) EXPECT_EQ(rig.driver->doRaw("X"), 7);
  });
  for (int i = 0; i < 100; ++i) {
    EXPECT_EQ(rig.scip2().fetchVersionStr(), 0);
    const std::string body = rig.driver->getResponseBody();
    EXPECT_TRUE(body == version || body == "other\n" || body.size() == SCAN_SIZE) << body;
  }
  other.join();
  EXPECT_EQ(rig.driver->getVend(), "maker;");
  EXPECT_TRUE(rig.scip2().isScanning());
  ASSERT_TRUE(rig.sensor.hears("G", 40));
  rig.scip2().stopAll();
  const std::vector<int> numbers = rig.takeAll();
  ASSERT_GE(numbers.size(), 30u);
  for (std::size_t i = 1; i < numbers.size(); ++i) EXPECT_EQ(numbers[i], numbers[i - 1] + 1);
}

// Catches: two workers on one line, of which one is lost with its thread.
TEST(Scip1Threads, FirstFaceIsMadeOnce) {
  cRig rig;
  std::atomic<int> ready{0};
  iSCIP2IF* faces[2] = {};
  const auto ask = [&](iSCIP2IF*& face) {
    ++ready;
    while (ready < 2) std::this_thread::yield();
    face = rig.driver->getSCIP2IF();
  };
  const std::string printed = outputOf([&] {
                                std::thread first(ask, std::ref(faces[0]));
                                ask(faces[1]);
                                first.join();
                              }).err;
  const std::string created = "New SCIP2 Adapter created\n";
  EXPECT_EQ(faces[0], faces[1]);
  EXPECT_EQ(printed.find(created), printed.rfind(created));
  rig.scip2().startScan(0, 1, 1, 0, 1, 0);
  EXPECT_EQ(numberOf(takeScan(rig.scip2())), 0);
}

// Catches: a scan lost or taken twice where taking, counting and trimming meet.
TEST(Scip1Threads, TenThousandScansInATightLoop) {
  constexpr int SCANS = 10000;
  constexpr int LEAD = 29;  // scans that the sensor may be ahead, so that the limit drops none
  cRig rig;
  rig.sensor.letGo(LEAD);
  rig.scip2().startScan(0, 1, 1, 0, 0, 0);
  for (int number = 0; number < SCANS; ++number) {
    tScan scan;
    do {
      if (rig.scip2().getScanNum() > 0) {
        scan = number % 3 == 0 ? rig.scip2().getScanFirst(0) : rig.scip2().getScanFirst();
      }
    } while (!scan && rig.scip2().waitScan(LONG));
    ASSERT_EQ(numberOf(scan), number);
    rig.sensor.addAnswer();
  }
}
