// Scanning over the adapter: what is counted, kept and stopped, when, and from which threads.
#include <gtest/gtest.h>

#include <atomic>
#include <numeric>

#include "tests/base/measure.h"
#include "tests/scip1/cHeldRig.h"

// Catches: N scans instead of N + 1; a count that runs ahead of the scans or behind them, that
// starts over after a stop, or that a failed scan shortens or ends.
TEST_F(Scip1, CountOfThreeGivesFourOverAStopAndRefusals) {
  rig.letGo(0);
  EXPECT_EQ(scip2.scansToGo(), 0);
  EXPECT_EQ(scip2.resumeScan(), -1);
  EXPECT_EQ(rig.startTwoPoints(3), 1);
  for (int left = 3; left > 0; --left) {
    ASSERT_TRUE(rig.hears("G", static_cast<std::size_t>(4 - left)));
    EXPECT_TRUE(scip2.isScanning());
    EXPECT_EQ(scip2.scansToGo(), left);
    rig.letGo(1);
  }
  ASSERT_TRUE(rig.hears("G", 4));
  EXPECT_EQ(scip2.stopAll(), 0);
  EXPECT_EQ(rig.takeAll(), (tNumbers{0, 1, 2}));
  rig.script("G", record("G00000101", "1"));
  EXPECT_EQ(scip2.resumeScan(), 0);
  rig.letGo(-1);
  ASSERT_TRUE(rig.hears("G", 6));
  EXPECT_TRUE(scip2.isScanning());
  rig.script("G", "");
  ASSERT_TRUE(rig.isOverAfter(6));
  EXPECT_EQ(rig.takeAll(), tNumbers{3});
}

// Catches: a last scan that wakes its waiter while isScanning() is still true; an abort that meets
// the end of the count and starts scanning again, without end.
TEST_F(Scip1, WaiterWakesAfterTheLastScanBesideAborts) {
  std::atomic<bool> isOver{false};
  std::thread other([&] {
    while (!isOver) scip2.abortScan();
  });
  for (int round = 0; round < 100 && !HasFailure(); ++round) {
    EXPECT_EQ(rig.startTwoPoints(1), 1) << "round " << round;
    for (std::size_t taken = 0; (taken < 2 || scip2.isScanning()) && !HasFailure();) {
      EXPECT_TRUE(scip2.waitScan(LONG)) << "round " << round << ", taken " << taken;
      taken += rig.takeAll().size();
      EXPECT_LE(taken, 2u) << "round " << round;
    }
  }
  isOver = true;
  other.join();
}

// Catches: memory that grows while nobody reads, the newest scans dropped instead of the oldest, a
// place counted from the other end, a scan lost to a look that finds nothing.
TEST_F(Scip1, ListKeepsTheNewestThirtyByPlace) {
  rig.startTwoPoints(34);
  ASSERT_TRUE(rig.isOverAfter(35));
  EXPECT_EQ(scip2.getScanNum(), 30);
  for (const int i : {30, -1, INT_MIN}) EXPECT_FALSE(scip2.getScanFirst(i)) << i;
  for (const int i : {0, 28, 30, -1, INT_MIN}) EXPECT_FALSE(scip2.getScanLast(i)) << i;
  EXPECT_EQ(numberOf(scip2.getScanLast(29)), 5);
  EXPECT_EQ(numberOf(scip2.getScanFirst(27)), 33);
  EXPECT_EQ(numberOf(scip2.getScanLast()), 34);
  tNumbers left(27);
  std::iota(left.begin(), left.end(), 6);
  EXPECT_EQ(rig.takeAll(), left);
  rig.driver->doScan(0, 1, 1);
  scip2.purgeScan();
  EXPECT_EQ(scip2.getScanNum(), 0);
}

// Catches: one stored scan instead of two, a range that is not the caller's; a refused call that
// changes the running scan, an abort that stops it; requests served more than one a scan, out of
// order, or lost; the wrong one sent.
TEST_F(Scip1, CallsWhileScanningAreRefusedOrWaitTheirTurn) {
  EXPECT_EQ(scip2.getStoredScan(7, 8, 1, 0), 0);
  ASSERT_TRUE(rig.isOverAfter(2));
  EXPECT_EQ(rig.takeAll(), (tNumbers{0, 1}));
  EXPECT_EQ(scip2.setCommSpeed(115200), 1);
  ASSERT_TRUE(rig.sensor.waitFor(&cSimCounters::records, 3, LONG_TIME));
  rig.letGo(0);
  rig.startTwoPoints(0);
  ASSERT_TRUE(rig.hears("G", 3));
  EXPECT_EQ(scip2.scansToGo(), -1);
  EXPECT_EQ(scip2.startScan(5, 9, 1, 0, 3, 0), 0);
  EXPECT_EQ(scip2.getStoredScan(5, 9, 1, 0), -1);
  EXPECT_EQ(scip2.setCommSpeed(115200), 0);
  EXPECT_EQ(scip2.resumeScan(), -1);
  EXPECT_EQ(scip2.startStoringScan(), 0);
  EXPECT_EQ(scip2.abortScan(), 0);
  EXPECT_EQ(scip2.startStoringScan(), 0);
  rig.letGo(5);
  ASSERT_TRUE(rig.hears("G", 6));
  EXPECT_TRUE(scip2.isScanning());
  EXPECT_EQ(rig.sensor.getCommands(),
            (tLines{"G00700801", "G00700801", "S1152001234567", "G00000101", "L0", "G00000101",
                    "G00000101", "L0", "G00000101"}));
}

// Catches: endless scanning that goes on after a failure, a waiter that is not told of it; a count
// below -1 that is not endless.
TEST_F(Scip1, FailureEndsEndlessScanning) {
  rig.letGo(3);
  rig.startTwoPoints(INT_MIN);
  ASSERT_TRUE(rig.hears("G", 4));
  EXPECT_EQ(rig.takeAll(), (tNumbers{0, 1, 2}));
  scip2.waitScan(0);  // takes a signal left from them
  rig.script("G", record("G00000101", "1"));
  rig.letGo(-1);
  EXPECT_TRUE(scip2.waitScan(LONG));
  EXPECT_FALSE(scip2.isScanning());
  EXPECT_EQ(scip2.getScanNum(), 0);
  EXPECT_EQ(rig.driver->getErr(), 0x401);
}

// Catches: an abort's request, or any start still queued, that starts again what a stop, or the
// count, has ended.
TEST(Scip1Counting, AbortStartsNothingAgain) {
  for (const bool stops : {true, false}) {
    cHeldRig rig;
    rig.letGo(0);
    rig.startTwoPoints(1);
    ASSERT_TRUE(rig.hears("G", 1));
    for (int i = 0; i < 3; ++i) rig.scip2.abortScan();
    if (stops) rig.scip2.stopAll();
    rig.letGo(-1);
    ASSERT_TRUE(stops || rig.isOverAfter(2));
    rig.scip2.abortScan();
    rig.scip2.startStoringScan();
    ASSERT_TRUE(rig.hears("L0", 1)) << "the last request";
    EXPECT_FALSE(rig.scip2.isScanning());
    EXPECT_EQ(rig.sensor.getCommands().size(), stops ? 2u : 3u);
  }
}

// Catches: a start that another one, done meanwhile, overtook in its messages, and that then scans
// without end.
TEST_F(Scip1, OvertakenStartKeepsItsCount) {
  const auto overtake = [](void* held, const char*, std::size_t size) {
    cHeldRig& same = *static_cast<cHeldRig*>(held);
    if (same.sensor.getCommands().empty() && same.scip2.getStoredScan(0, 1, 1, 0) == 0) {
      same.isOverAfter(2);
    }
    return static_cast<ssize_t>(size);
  };
  FILE* const before = stderr;
  stderr = fopencookie(&rig, "w", {nullptr, overtake, nullptr, nullptr});
  setvbuf(stderr, nullptr, _IONBF, 0);
  EXPECT_EQ(rig.startTwoPoints(2), 1);
  fclose(stderr);
  stderr = before;
  EXPECT_TRUE(rig.isOverAfter(5));
  EXPECT_EQ(rig.takeAll(), (tNumbers{0, 1, 2, 3, 4}));
}

// Catches: a scan of a stopped start that counts for, ends, or lends its range to the next one; a
// new start that waits for the old one's period.
TEST(Scip1Counting, OldPassLeavesTheNewStartAlone) {
  for (const bool isGood : {true, false}) {
    cHeldRig rig;
    rig.letGo(0);
    rig.script("G010011", record("G01001101", isGood ? "0" : "1", isGood ? "0000\n" : ""));
    rig.scip2.startScan(10, 11, 1, 36000, 0, 0);
    ASSERT_TRUE(rig.hears("G010011", 1));
    rig.scip2.stopAll();
    EXPECT_EQ(rig.scip2.startScan(20, 21, 1, 36000, isGood ? 1 : 0, 0), 1);
    rig.letGo(1);
    ASSERT_TRUE(rig.hears("G02002101", 1));
    rig.scip2.startStoringScan();
    rig.letGo(-1);
    ASSERT_TRUE(rig.hears("L0", 1)) << "once the scan is counted";
    EXPECT_TRUE(rig.scip2.isScanning());
    EXPECT_EQ(rig.scip2.scansToGo(), isGood ? 0 : -1);
    EXPECT_EQ(rig.scip2.getScanNum(), isGood ? 2 : 1);
  }
}

// Catches: a period of a whole number of milliseconds that only the rounded product reaches; a wait
// in another unit, or none.
TEST_F(Scip1, PeriodIsTheExactProductTruncated) {
  using tRow = std::pair<int, std::int64_t>;
  for (const auto& [tenths, milliseconds] :
       {tRow{0, 0}, tRow{3, 300}, tRow{43, 4299}, tRow{81, 8099}, tRow{INT_MAX, 214748364700}}) {
    EXPECT_EQ(cSCIP12Adapter::toMilliseconds(tenths * 0.1), milliseconds) << tenths;
  }
  const long taken = measure([&] {
    scip2.startScan(0, 1, 1, 1, 3, 0);
    for (int number = 0; number < 4; ++number) EXPECT_EQ(numberOf(takeScan(scip2)), number);
  });
  EXPECT_GE(taken, 299);
  EXPECT_LT(taken, 10000);
}

// Catches: scans that are put off, each by a period more, after one that took three periods.
TEST_F(Scip1, CatchesUpBackToBack) {
  rig.letGo(0);
  scip2.startScan(0, 1, 1, 10, 0, 0);
  ASSERT_TRUE(rig.hears("G", 1));
  EXPECT_FALSE(scip2.waitScan(3100)) << "no scan comes in three periods";
  rig.letGo(-1);
  EXPECT_LT(measure([&] { EXPECT_TRUE(rig.hears("G", 4)); }), 1900);
}

// Catches: a driver whose end hangs, waits out its period, or decodes half an answer and dies.
TEST(Scip1Schedule, EndTakesOneExchangeAtMost) {
  for (const bool isInAnAnswer : {false, true}) {
    cHeldRig rig(115200);
    rig.port->readTimeout = 2000;  // no machine is so busy that the babble pauses for longer
    if (isInAnAnswer) {
      rig.script("G", "G00000101\n0\n0000\n");
      std::string endless;  // lines, for minutes at the line's speed
      while (endless.size() < 1000000) endless += "0000\n";
      rig.startTwoPoints(5);
      ASSERT_TRUE(rig.sensor.waitFor(&cSimCounters::records, 1, LONG_TIME));
      rig.sensor.say(endless);
    } else {
      rig.scip2.startScan(0, 1, 1, 36000, 5, 0);  // one an hour
      ASSERT_TRUE(rig.scip2.waitScan(LONG));
      EXPECT_FALSE(rig.scip2.waitScan(100));
    }
    EXPECT_LT(measure([&rig] { rig.driver.reset(); }), 10000);
    EXPECT_FALSE(rig.port->isInterrupted());
  }
}

// Catches: two workers on one line, of which one is lost with its thread; messages with other texts
// or values, on another stream, once instead of each time.
TEST_F(Scip1, FirstFaceIsMadeOnce) {
  cSensorDriverSCIP1 driver(rig.link);
  std::atomic<int> ready{0};
  const auto ask = [&] {
    ++ready;
    while (ready < 2) std::this_thread::yield();
    driver.getSCIP2IF();
  };
  const cOutput output = outputOf([&] {
    std::thread other(ask);
    ask();
    other.join();
    EXPECT_EQ(driver.getSCIP2IF()->startScan(0, 1, 1, 3, 0, 4095), 1);
  });
  const std::string creating = "Creating SCIP2 Adapter\n";
  const std::string started = "New SCIP2 Adapter starting..\nNew SCIP2 Adapter started\n";
  EXPECT_EQ(output.err, creating + "New SCIP2 Adapter created\n" + started + creating + started +
                            creating + started +
                            "Starting scan st:0 ed:1 sk:1 ssk:3 s#:-1 mx:4095\n"
                            "resetting interval :0.300000[ms] (from 3 scan)\n");
  EXPECT_EQ(output.out, "");
}

// Catches: a scan lost or taken twice where taking, counting and trimming meet; an answer, or half
// of it, read by another thread; a caller who never gets a turn.
TEST_F(Scip1, TenThousandScansBesideCommands) {
  const std::string version = "VEND:maker;\nPROD:scanner;\n";
  rig.script("V", record("V", "0", version));
  rig.script("X", record("X", "7", "other\n"));
  rig.letGo(28);  // scans that the sensor may be ahead, so that the limit drops none
  rig.startTwoPoints(0);
  std::thread other([&] {
    for (int i = 0; i < 100; ++i) {
      rig.letGo(1);
      EXPECT_EQ(i % 2 == 0 ? rig.driver->doRaw("X") - 7 : scip2.fetchVersionStr(), 0);
      const std::string body = rig.driver->getResponseBody();
      EXPECT_TRUE(body == version || body == "other\n" || body.size() == 5) << body;
    }
  });
  for (int number = 0; number < 10000 && !testing::Test::HasFailure(); ++number) {
    tScan scan;
    do {
      if (scip2.getScanNum() > 0) scan = scip2.getScanFirst();
    } while (!scan && scip2.waitScan(LONG));
    EXPECT_EQ(numberOf(scan), number);
    rig.letGo(1);
  }
  rig.letGo(-1);
  other.join();
  EXPECT_EQ(rig.driver->getVend(), "maker;");
}
