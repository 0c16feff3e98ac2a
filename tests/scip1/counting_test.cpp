// Scans are two points, steps 0 to 1, back to back, unless a test says otherwise.
#include <gtest/gtest.h>

#include "tests/scip1/cHeldSensor.h"

namespace {

using tNumbers = std::vector<int>;

int startTwoPoints(cRig& rig, int count) { return rig.scip2().startScan(0, 1, 1, 0, count, 4095); }

/// Whether the worker has served all requests so far; it sends "L0" for that.
bool servesAll(cRig& rig) {
  const std::size_t before = rig.sensor.countCommands("L0");
  rig.scip2().startStoringScan();
  return rig.sensor.hears("L0", before + 1);
}

}  // namespace

// Catches: N scans instead of N + 1, a count that runs ahead of the scans or behind them.
TEST(Scip1Counting, CountOfTwoGivesThree) {
  cRig rig;
  rig.sensor.letGo(0);
  EXPECT_EQ(rig.scip2().scansToGo(), 0);
  EXPECT_EQ(startTwoPoints(rig, 2), 1);
  for (int left = 2; left >= 0; --left) {
    ASSERT_TRUE(rig.sensor.hears("G", static_cast<std::size_t>(3 - left)));
    EXPECT_TRUE(rig.scip2().isScanning());
    EXPECT_EQ(rig.scip2().scansToGo(), left);
    rig.sensor.letGo(1);
  }
  ASSERT_TRUE(rig.waitForIdle());
  EXPECT_EQ(rig.scip2().scansToGo(), 0);
  EXPECT_EQ(rig.takeAll(), (tNumbers{0, 1, 2}));
}

// Catches: a last scan that wakes its waiter while isScanning() is still true.
TEST(Scip1Counting, WaiterWakesAfterTheLastScan) {
  cRig rig;
  for (int round = 0; round < 100; ++round) {
    ASSERT_EQ(startTwoPoints(rig, 1), 1);
    for (std::size_t taken = 0; taken < 2 || rig.scip2().isScanning();) {
      ASSERT_TRUE(rig.scip2().waitScan(LONG)) << "round " << round << ", taken " << taken;
      taken += rig.takeAll().size();
    }
  }
}

// Catches: messages with other texts or values, on another stream, once instead of each time.
TEST(Scip1Counting, MessagesAreExact) {
  cRig rig;
  const cOutput output = outputOf([&] {
    EXPECT_EQ(rig.driver->getSCIP2IF(), rig.driver->getSCIP2IF());
    EXPECT_EQ(rig.scip2().startScan(44, 725, 1, 3, 0, 0), 1);
    ASSERT_TRUE(rig.sensor.hears("G04472501", 1));
    EXPECT_EQ(rig.scip2().stopAll(), 0);
  });
  const std::string creating = "Creating SCIP2 Adapter\n";
  const std::string started = "New SCIP2 Adapter starting..\nNew SCIP2 Adapter started\n";
  EXPECT_EQ(output.err, creating + "New SCIP2 Adapter created\n" + started +  //
                            creating + started + creating + started +
                            "Starting scan st:44 ed:725 sk:1 ssk:3 s#:-1 mx:0\n"
                            "resetting interval :0.300000[ms] (from 3 scan)\n");
  EXPECT_EQ(output.out, "");
}

// Catches: memory that grows while nobody reads, the newest scans dropped instead of the oldest.
TEST(Scip1Counting, ListKeepsThirty) {
  cRig rig;
  startTwoPoints(rig, 34);
  ASSERT_TRUE(rig.sensor.hears("G", 35));
  ASSERT_TRUE(rig.waitForIdle());
  EXPECT_EQ(rig.scip2().getScanNum(), 30);
  const tNumbers numbers = rig.takeAll();
  EXPECT_EQ(numbers.front(), 5);
  EXPECT_EQ(numbers.back(), 34);
}

// Catches: a refused call that changes the running scan, an abort that stops it; requests served
// more than one a scan, out of order, or lost; the wrong one sent.
TEST(Scip1Counting, CallsWhileScanningAreRefusedOrWaitTheirTurn) {
  cRig rig;
  iSCIP2IF& scip2 = rig.scip2();
  EXPECT_EQ(scip2.setCommSpeed(115200), 1);
  ASSERT_TRUE(rig.sensor.hasSaid(1));
  rig.sensor.letGo(0);
  startTwoPoints(rig, 0);
  ASSERT_TRUE(rig.sensor.hears("G", 1));
  EXPECT_EQ(scip2.scansToGo(), -1);
  EXPECT_EQ(scip2.startScan(5, 9, 1, 0, 3, 0), 0);
  EXPECT_EQ(scip2.getStoredScan(5, 9, 1, 0), -1);
  EXPECT_EQ(scip2.setCommSpeed(115200), 0);
  EXPECT_EQ(scip2.resumeScan(), -1);
  EXPECT_EQ(scip2.startStoringScan(), 0);
  EXPECT_EQ(scip2.abortScan(), 0);
  EXPECT_EQ(scip2.startStoringScan(), 0);
  rig.sensor.letGo(5);
  ASSERT_TRUE(rig.sensor.hears("G", 4));
  EXPECT_TRUE(scip2.isScanning());
  EXPECT_EQ(rig.sensor.getCommands(),
            (std::vector<std::string>{"S1152001234567", "G00000101", "L0", "G00000101", "G00000101",
                                      "L0", "G00000101"}));
}

// Catches: endless scanning that goes on after a failure, a waiter that is not told of it.
TEST(Scip1Counting, FailureEndsEndlessScanning) {
  cRig rig;
  rig.sensor.letGo(3);
  startTwoPoints(rig, 0);
  ASSERT_TRUE(rig.sensor.hears("G", 4));
  EXPECT_EQ(rig.takeAll(), (tNumbers{0, 1, 2}));
  rig.scip2().waitScan(0);  // takes a signal left from them
  rig.sensor.script("G", record("G00000101", "1"));
  rig.sensor.letGo(-1);
  EXPECT_TRUE(rig.scip2().waitScan(LONG));
  EXPECT_FALSE(rig.scip2().isScanning());
  EXPECT_EQ(rig.scip2().getScanNum(), 0);
  EXPECT_EQ(rig.driver->getErr(), 0x401);
}

// Catches: a failed scan that counts, or that ends a counted one.
TEST(Scip1Counting, CountedScanningTriesAgain) {
  cRig rig;
  rig.sensor.script("G", record("G00000101", "1"));
  startTwoPoints(rig, 1);
  ASSERT_TRUE(rig.sensor.hears("G", 3));
  EXPECT_EQ(rig.scip2().scansToGo(), 1);
  rig.sensor.script("G", "");
  ASSERT_TRUE(rig.waitForIdle());
  EXPECT_EQ(rig.takeAll(), (tNumbers{0, 1}));
}

// Catches: a start that is still queued when the stop comes and starts all the same.
TEST(Scip1Counting, StopRightAfterStartStops) {
  cRig rig;
  for (int round = 0; round < 50; ++round) {
    EXPECT_EQ(startTwoPoints(rig, 0), 1);
    EXPECT_EQ(rig.scip2().stopAll(), 0);
    ASSERT_TRUE(servesAll(rig));
    ASSERT_FALSE(rig.scip2().isScanning()) << "round " << round;
  }
}

// Catches: an abort's request that starts again what a stop, or the count, has ended.
TEST(Scip1Counting, AbortStartsNothingAgain) {
  for (const bool stops : {true, false}) {
    cRig rig;
    rig.sensor.letGo(0);
    startTwoPoints(rig, 1);
    ASSERT_TRUE(rig.sensor.hears("G", 1));
    for (int i = 0; i < 3; ++i) rig.scip2().abortScan();
    if (stops) rig.scip2().stopAll();
    rig.sensor.letGo(-1);
    ASSERT_TRUE(stops || (rig.sensor.hears("G", 2) && rig.waitForIdle()));
    ASSERT_TRUE(servesAll(rig));
    EXPECT_FALSE(rig.scip2().isScanning());
    EXPECT_EQ(rig.sensor.countCommands("G"), stops ? 1u : 2u);
  }
}

// Catches: a scan of a stopped start that counts for, ends, or lends its range to the next one; a
// new start that waits for the old one's period.
TEST(Scip1Counting, OldPassLeavesTheNewStartAlone) {
  for (const char* status : {"0", "1"}) {
    cRig rig;
    rig.sensor.letGo(0);
    rig.sensor.script("G010011", record("G01001101", status, *status == '0' ? "0000\n" : ""));
    rig.scip2().startScan(10, 11, 1, 36000, 0, 0);
    ASSERT_TRUE(rig.sensor.hears("G010011", 1));
    rig.scip2().stopAll();
    EXPECT_EQ(rig.scip2().startScan(20, 29, 1, 0, 1, 0), 1);
    rig.sensor.letGo(-1);
    ASSERT_TRUE(rig.sensor.hears("G020029", 2));
    ASSERT_TRUE(rig.waitForIdle());
    EXPECT_EQ(rig.sensor.countCommands("G"), 3u);
    EXPECT_EQ(rig.scip2().getScanNum(), *status == '0' ? 3 : 2);
    EXPECT_EQ(rig.scip2().getScanLast()->points.size(), 10u);
  }
}

// Catches: a stopped count that cannot go on, or starts over.
TEST(Scip1Counting, ResumeGoesOn) {
  cRig rig;
  EXPECT_EQ(rig.scip2().resumeScan(), -1);
  rig.sensor.letGo(2);
  startTwoPoints(rig, 3);
  ASSERT_TRUE(rig.sensor.hears("G", 3));
  rig.scip2().stopAll();
  EXPECT_EQ(rig.scip2().scansToGo(), 0);
  EXPECT_EQ(rig.scip2().resumeScan(), 0);
  rig.sensor.letGo(-1);
  ASSERT_TRUE(rig.sensor.hears("G", 4));
  ASSERT_TRUE(rig.waitForIdle());
  EXPECT_EQ(rig.takeAll(), (tNumbers{0, 1, 2, 3}));
}

// Catches: one scan instead of two, a range that is not the caller's, a count that is undefined.
TEST(Scip1Counting, StoredScanTakesTwo) {
  cRig rig;
  EXPECT_EQ(rig.scip2().getStoredScan(7, 8, 1, 0), 0);
  ASSERT_TRUE(rig.sensor.hears("G00700801", 2));
  ASSERT_TRUE(rig.waitForIdle());
  EXPECT_EQ(rig.takeAll(), (tNumbers{0, 1}));
  startTwoPoints(rig, INT_MIN);  // below -1 is endless too
  EXPECT_TRUE(rig.sensor.hears("G00000101", 3));
}

// Catches: a place counted from the other end, a scan lost to a look that finds nothing.
TEST(Scip1Counting, ScansAreTakenByPlace) {
  cRig rig;
  iSCIP2IF& scip2 = rig.scip2();
  for (int i = 0; i < 3; ++i) rig.driver->doScan(0, 1, 1);
  for (const int i : {3, -1, INT_MAX, INT_MIN}) EXPECT_FALSE(scip2.getScanFirst(i)) << i;
  for (const int i : {0, 1, 3, -1, INT_MAX, INT_MIN}) EXPECT_FALSE(scip2.getScanLast(i)) << i;
  EXPECT_EQ(numberOf(scip2.getScanLast(2)), 0);
  EXPECT_EQ(numberOf(scip2.getScanFirst(1)), 2);
  EXPECT_EQ(numberOf(scip2.getScanLast()), 1);
  EXPECT_FALSE(scip2.getScanLast());
  EXPECT_FALSE(scip2.getScanFirst());
  EXPECT_FALSE(scip2.getScanFirst(0));
  EXPECT_FALSE(scip2.getScanLast(-1));
  rig.driver->doScan(0, 1, 1);
  scip2.purgeScan();
  EXPECT_EQ(scip2.getScanNum(), 0);
}
