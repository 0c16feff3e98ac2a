#include <gtest/gtest.h>

#include <numeric>

#include "tests/scip1/cHeldRig.h"

// Catches: N scans instead of N + 1; a count that runs ahead of the scans or behind them, that
// starts over after a stop, or that a failed scan shortens or ends.
TEST(Scip1Counting, CountOfThreeGivesFourOverAStopAndRefusals) {
  cHeldRig rig;
  iSCIP2IF& scip2 = rig.scip2();
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
  ASSERT_TRUE(rig.waitForIdle());
  EXPECT_EQ(rig.takeAll(), tNumbers{3});
}

// Catches: a last scan that wakes its waiter while isScanning() is still true.
TEST(Scip1Counting, WaiterWakesAfterTheLastScan) {
  cHeldRig rig;
  for (int round = 0; round < 100; ++round) {
    ASSERT_EQ(rig.startTwoPoints(1), 1);
    for (std::size_t taken = 0; taken < 2 || rig.scip2().isScanning();) {
      ASSERT_TRUE(rig.scip2().waitScan(LONG)) << "round " << round << ", taken " << taken;
      taken += rig.takeAll().size();
    }
  }
}

// Catches: messages with other texts or values, on another stream, once instead of each time.
TEST(Scip1Counting, MessagesAreExact) {
  cHeldRig rig;
  rig.script("G", record("G04472501", "1"));
  const cOutput output = outputOf([&] {
    EXPECT_EQ(rig.driver->getSCIP2IF(), &rig.scip2());
    EXPECT_EQ(rig.scip2().startScan(44, 725, 1, 3, 0, 0), 1);
    ASSERT_TRUE(rig.hears("G04472501", 1));
  });
  const std::string creating = "Creating SCIP2 Adapter\n";
  const std::string started = "New SCIP2 Adapter starting..\nNew SCIP2 Adapter started\n";
  EXPECT_EQ(output.err, creating + "New SCIP2 Adapter created\n" + started + creating + started +
                            "Starting scan st:44 ed:725 sk:1 ssk:3 s#:-1 mx:0\n"
                            "resetting interval :0.300000[ms] (from 3 scan)\n");
  EXPECT_EQ(output.out, "");
}

// Catches: memory that grows while nobody reads, the newest scans dropped instead of the oldest, a
// place counted from the other end, a scan lost to a look that finds nothing.
TEST(Scip1Counting, ListKeepsTheNewestThirtyByPlace) {
  cHeldRig rig;
  iSCIP2IF& scip2 = rig.scip2();
  rig.startTwoPoints(34);
  ASSERT_TRUE(rig.hears("G", 35));
  ASSERT_TRUE(rig.waitForIdle());
  EXPECT_EQ(scip2.getScanNum(), 30);
  for (const int i : {30, -1, INT_MAX, INT_MIN}) EXPECT_FALSE(scip2.getScanFirst(i)) << i;
  for (const int i : {0, 28, 30, -1, INT_MAX, INT_MIN}) EXPECT_FALSE(scip2.getScanLast(i)) << i;
  EXPECT_EQ(numberOf(scip2.getScanLast(29)), 5);
  EXPECT_EQ(numberOf(scip2.getScanFirst(27)), 33);
  EXPECT_EQ(numberOf(scip2.getScanLast()), 34);
  tNumbers left(27);
  std::iota(left.begin(), left.end(), 6);
  EXPECT_EQ(rig.takeAll(), left);
  for (const int i : {0, -1}) EXPECT_FALSE(scip2.getScanFirst(i) || scip2.getScanLast(i)) << i;
  EXPECT_FALSE(scip2.getScanLast());
  rig.driver->doScan(0, 1, 1);
  scip2.purgeScan();
  EXPECT_EQ(scip2.getScanNum(), 0);
}

// Catches: one stored scan instead of two, a range that is not the caller's; a refused call that
// changes the running scan, an abort that stops it; requests served more than one a scan, out of
// order, or lost; the wrong one sent.
TEST(Scip1Counting, CallsWhileScanningAreRefusedOrWaitTheirTurn) {
  cHeldRig rig;
  iSCIP2IF& scip2 = rig.scip2();
  EXPECT_EQ(scip2.getStoredScan(7, 8, 1, 0), 0);
  ASSERT_TRUE(rig.hears("G", 2));
  ASSERT_TRUE(rig.waitForIdle());
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
TEST(Scip1Counting, FailureEndsEndlessScanning) {
  cHeldRig rig;
  rig.letGo(3);
  rig.startTwoPoints(INT_MIN);
  ASSERT_TRUE(rig.hears("G", 4));
  EXPECT_EQ(rig.takeAll(), (tNumbers{0, 1, 2}));
  rig.scip2().waitScan(0);  // takes a signal left from them
  rig.script("G", record("G00000101", "1"));
  rig.letGo(-1);
  EXPECT_TRUE(rig.scip2().waitScan(LONG));
  EXPECT_FALSE(rig.scip2().isScanning());
  EXPECT_EQ(rig.scip2().getScanNum(), 0);
  EXPECT_EQ(rig.driver->getErr(), 0x401);
}

// Catches: a start that is still queued when the stop comes and starts all the same.
TEST(Scip1Counting, StopRightAfterStartStops) {
  cHeldRig rig;
  for (std::size_t round = 1; round <= 50; ++round) {
    EXPECT_EQ(rig.startTwoPoints(0), 1);
    EXPECT_EQ(rig.scip2().stopAll(), 0);
    rig.scip2().startStoringScan();
    ASSERT_TRUE(rig.hears("L0", round)) << "the last request";
    ASSERT_FALSE(rig.scip2().isScanning()) << "round " << round;
  }
}

// Catches: an abort's request that starts again what a stop, or the count, has ended.
TEST(Scip1Counting, AbortStartsNothingAgain) {
  for (const bool stops : {true, false}) {
    cHeldRig rig;
    rig.letGo(0);
    rig.startTwoPoints(1);
    ASSERT_TRUE(rig.hears("G", 1));
    for (int i = 0; i < 3; ++i) rig.scip2().abortScan();
    if (stops) rig.scip2().stopAll();
    rig.letGo(-1);
    ASSERT_TRUE(stops || (rig.hears("G", 2) && rig.waitForIdle()));
    rig.scip2().startStoringScan();
    ASSERT_TRUE(rig.hears("L0", 1)) << "the last request";
    EXPECT_FALSE(rig.scip2().isScanning());
    EXPECT_EQ(rig.sensor.getCommands().size(), stops ? 2u : 3u);
  }
}

// Catches: a scan of a stopped start that counts for, ends, or lends its range to the next one; a
// new start that waits for the old one's period.
TEST(Scip1Counting, OldPassLeavesTheNewStartAlone) {
  for (const char* status : {"0", "1"}) {
    cHeldRig rig;
    rig.letGo(0);
    rig.script("G010011", record("G01001101", status, *status == '0' ? "0000\n" : ""));
    rig.scip2().startScan(10, 11, 1, 36000, 0, 0);
    ASSERT_TRUE(rig.hears("G010011", 1));
    rig.scip2().stopAll();
    EXPECT_EQ(rig.scip2().startScan(20, 21, 1, 0, 1, 0), 1);
    rig.letGo(-1);
    ASSERT_TRUE(rig.hears("G020021", 2));
    ASSERT_TRUE(rig.waitForIdle());
    EXPECT_EQ(rig.sensor.getCommands(), (tLines{"G01001101", "G02002101", "G02002101"}));
    EXPECT_EQ(rig.scip2().getScanNum(), *status == '0' ? 3 : 2);
  }
}
