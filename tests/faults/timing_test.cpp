// The right bytes at the wrong time, or none any more.
#include "tests/faults/cChild.h"
#include "tests/support/syscalls.h"

namespace {

// Catches: a call with another's time-out, or that waits once more for each thing it sends.
TEST(MuteSensor, CostsEachCallItsTimeOut) {
  inBothDialects([](eSimDialect dialect) {
    cFaultRig rig(turning(50, dialect));
    iSCIP2IF& face = rig.face();
    rig.scan();
    rig.sensor.setFault(eSimFault::STALL);
    const auto expectCost = [&](const char* name, int limit, const std::function<int()>& call) {
      const bool isAsked = dialect == SCIP2;  // the adapter of SCIP 1.x asks in its own thread
      rig.during(name, isAsked ? limit + READ : 0, [&] {
        const long took = measure([&] { EXPECT_TRUE(call() == -1 || !isAsked) << name; });
        EXPECT_GE(took, isAsked ? limit : 0) << name;
      });
    };
    expectCost("startScan", 200, [&] { return face.startScan(FIRST, LAST, 1, 0, 0, FAR); });
    expectCost("stopAll", ANSWER, [&] { return face.stopAll(); });
    expectCost("abortScan", ANSWER, [&] { return face.abortScan(); });
    expectCost("getStoredScan", ANSWER, [&] { return face.getStoredScan(FIRST, LAST, 1, FAR); });
    expectCost("startStoringScan", ANSWER, [&] { return face.startStoringScan(); });
  });
}

// Catches: a wait that ends an hour late, or at once, or a period that is made up for.
TEST(WallClockThatIsSet, IsHandled) {
  inBothDialects([](eSimDialect dialect) {
    constexpr int INTERVAL = 2;  // a scan each 200 ms: after three turns, or two tenths of a second
    cFaultRig rig(turning(15, dialect));
    rig.scan(0, FAR, INTERVAL);
    for (const long step : {3600L, -7200L, 3600L}) {
      syscalls::stepWallClock(step);
      const auto takeFive = [&] {
        for (int scan = 0; scan < 5; ++scan) rig.expectCorrectScan();
      };
      EXPECT_GE(measure(takeFive), 3 * 200);
    }
    rig.sensor.setFault(eSimFault::STALL);
    for (const long step : {3600L, -3600L}) {
      std::thread setter([step] { syscalls::stepWallClock(step); });
      rig.during("a wait for scans", 2 * 400, [&] {
        const auto takeAll = [&] {
          while (rig.face().waitScan(400)) rig.take();
        };
        EXPECT_GE(measure(takeAll), 400);
      });
      setter.join();
    }
    EXPECT_EQ(rig.flagged + rig.wrong, 0);
  });
}

/// After the first half of a record.
void waitForHalfARecord(cSimSensor& sensor) {
  sensor.setFault(eSimFault::CUT_SHORT, 101);
  const std::uint64_t before = sensor.getCounters().records;
  EXPECT_TRUE(sensor.waitFor(&cSimCounters::records, before + 2, LONG_TIME));
}

// Catches, with no scan: a command on a dead port that waits for ever; in the middle of a line:
// half a record made a scan, or that SCIP 1.x waits on; with scans: a worker that spins where
// records are still expected, an adapter that asks a dead port again without a pause.
TEST(PulledCable, IsHandled) {
  constexpr int NONE = -1, ENDLESS = 0, COUNTED = 99;
  for (const auto& [scans, isInMidLine] : {std::pair(NONE, false), std::pair(COUNTED, true),
                                           std::pair(ENDLESS, false), std::pair(COUNTED, false)}) {
    inBothDialects([count = scans, isHalf = isInMidLine](eSimDialect dialect) {
      cFaultRig rig(turning(50, dialect));
      if (count != NONE) rig.scan(count);
      if (isHalf) waitForHalfARecord(rig.sensor);
      rig.sensor.unplug();
      const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(1);
      const auto isOver = [end] { return std::chrono::steady_clock::now() > end; };
      if (count != NONE) rig.during("a while", 1100, [&] { rig.follow(isOver); });
      rig.during("a command", dialect == SCIP1 ? READ : ANSWER,
                 [&] { EXPECT_EQ(rig.face().fetchVersionStr(), -1); });
      rig.during("the end", READ, [&] { rig.driver.reset(); });
      EXPECT_EQ(rig.wrong, 0);
    });
  }
}

}  // namespace
