#include <gtest/gtest.h>

#include <atomic>

#include "tests/scip1/cHeldRig.h"

// Catches: two workers on one line, of which one is lost with its thread.
TEST(Scip1Threads, FirstFaceIsMadeOnce) {
  cHeldRig rig;
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
  EXPECT_EQ(faces[0], faces[1]);
  EXPECT_EQ(printed.find("Adapter created"), printed.rfind("Adapter created"));
}

// Catches: a scan lost or taken twice where taking, counting and trimming meet; an answer, or half
// of it, read by another thread; a caller who never gets a turn.
TEST(Scip1Threads, TenThousandScansBesideCommands) {
  constexpr int SCANS = 10000;
  constexpr int LEAD = 28;  // scans that the sensor may be ahead, so that the limit drops none
  const std::string version = "VEND:maker;\nPROD:scanner;\n";
  cHeldRig rig;
  rig.script("V", record("V", "0", version));
  rig.script("X", record("X", "7", "other\n"));
  rig.letGo(LEAD);
  rig.startTwoPoints(0);
  std::thread other([&] {
    for (int i = 0; i < 100; ++i) {
      rig.letGo(1);
      EXPECT_EQ(i % 2 == 0 ? rig.driver->doRaw("X") - 7 : rig.scip2().fetchVersionStr(), 0);
      const std::string body = rig.driver->getResponseBody();
      EXPECT_TRUE(body == version || body == "other\n" || body.size() == 5) << body;
    }
  });
  for (int number = 0; number < SCANS && !testing::Test::HasFailure(); ++number) {
    tScan scan;
    do {
      if (rig.scip2().getScanNum() > 0) {
        scan = number % 3 == 0 ? rig.scip2().getScanFirst(0) : rig.scip2().getScanFirst();
      }
    } while (!scan && rig.scip2().waitScan(LONG));
    EXPECT_EQ(numberOf(scan), number);
    rig.letGo(1);
  }
  rig.letGo(-1);
  other.join();
  EXPECT_EQ(rig.driver->getVend(), "maker;");
}
