// Scanning over the adapter: what is counted, kept and stopped, when, and from which threads.

#include <atomic>
#include <future>

#include "tests/scip1/cHeldRig.h"
#include "tests/support/cPtyPair.h"

/// Runs `action` in another thread, and comes back when that waits for something, or has ended.
static std::future<void> runUntilAsleep(const std::function<void()>& action) {
  std::atomic<pid_t> thread{0};
  std::future<void> end = std::async(std::launch::async, [&thread, action] {
    thread = gettid();
    action();
  });
  EXPECT_TRUE(eventually([&] {
    std::string state;
    std::getline(std::ifstream("/proc/self/task/" + std::to_string(thread) + "/stat"), state);
    return state.find(") S ") != std::string::npos ||
           end.wait_for(LONG_TIME * 0) != std::future_status::timeout;
  }));
  return end;
}

// Catches: N scans instead of N + 1; a count that runs ahead of the scans or behind them, that
// starts over after a stop, or that a failed scan shortens or ends.
TEST_F(Scip1, CountOfThreeGivesFourOverAStopAndRefusals) {
  rig.allowAnswers(0);
  EXPECT_EQ((tNumbers{scip2.scansToGo(), scip2.resumeScan(), rig.startTwoPoints(3)}),
            (tNumbers{0, -1, 1}));
  for (int left = 3; left > 0; --left) {
    ASSERT_TRUE(rig.hears("G", static_cast<std::size_t>(4 - left)));
    EXPECT_TRUE(scip2.isScanning());
    EXPECT_EQ(scip2.scansToGo(), left);
    rig.allowAnswers(1);
  }
  ASSERT_TRUE(rig.hears("G", 4));
  EXPECT_EQ(scip2.stopAll(), 0);
  EXPECT_EQ(rig.takeAll(), (tNumbers{0, 1, 2}));
  rig.script("G", record("G00000101", "1"));
  EXPECT_EQ(scip2.resumeScan(), 0);
  rig.allowAnswers(-1);
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
  EXPECT_EQ((tNumbers{numberOf(scip2.getScanLast(29)), numberOf(scip2.getScanFirst(27)),
                      numberOf(scip2.getScanLast()), numberOf(scip2.getScanFirst())}),
            (tNumbers{5, 33, 34, 6}));
  EXPECT_EQ(rig.takeAll().size(), 26u);
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
  rig.allowAnswers(0);
  rig.startTwoPoints(0);
  ASSERT_TRUE(rig.hears("G", 3));
  EXPECT_EQ(
      (tNumbers{scip2.scansToGo(), scip2.startScan(5, 9, 1, 0, 3, 0),
                scip2.getStoredScan(5, 9, 1, 0), scip2.setCommSpeed(115200), scip2.resumeScan(),
                scip2.startStoringScan(), scip2.abortScan(), scip2.startStoringScan()}),
      (tNumbers{-1, 0, -1, 0, -1, 0, 0, 0}));
  rig.allowAnswers(5);
  ASSERT_TRUE(rig.hears("G", 6));
  EXPECT_TRUE(scip2.isScanning());
  EXPECT_EQ(rig.sensor.getCommands(),
            (tLines{"G00700801", "G00700801", "S1152001234567", "G00000101", "L0", "G00000101",
                    "G00000101", "L0", "G00000101"}));
}

// Catches: scans that are put off, each by a period more, after one that took three periods; a wait
// in another unit, or none.
TEST_F(Scip1, CatchesUpBackToBack) {
  rig.allowAnswers(0);
  scip2.startScan(0, 1, 1, 5, 0, 0);
  ASSERT_TRUE(rig.hears("G", 1));
  EXPECT_FALSE(scip2.waitScan(1600)) << "no scan comes in three periods";
  rig.allowAnswers(-1);
  EXPECT_LT(measure([&] { EXPECT_TRUE(rig.hears("G", 4)); }), 1400);
  const long taken = measure([&] { EXPECT_TRUE(rig.hears("G", 7)); });  // 1.4 s less what was lost
  EXPECT_TRUE(taken > 200 && taken < 5000) << taken;
}

// Catches: a driver whose end hangs, waits out its period, or decodes half an answer and dies.
TEST(Scip1Schedule, EndTakesOneExchangeAtMost) {
  std::string endless = "G00000101\n0\n";  // for minutes at the line's speed
  while (endless.size() < 1000000) endless += "0000\n";
  for (const std::string& answer : {std::string(), endless}) {
    cHeldRig rig(115200);
    rig.port->readTimeout = 2000;  // no machine is so busy that the babble pauses for longer
    rig.script("G", answer);
    rig.scip2.startStoringScan();
    rig.scip2.startScan(0, 1, 1, 36000, 5, 0);  // one an hour
    ASSERT_TRUE(eventually([&] { return rig.sensor.getCounters().bytesWritten >= 24; }));
    EXPECT_LT(measure([&rig] { rig.driver.reset(); }), 10000);
    EXPECT_FALSE(rig.port->isInterrupted());
  }
}

// Catches: callers who wait for more than the exchange under way while the worker scans back to
// back, or who are not served in the order in which they came.
TEST_F(Scip1, CallersComeNextInOrder) {
  const tLines expected = {"G00000101", "V", "L1", "X", "L0"};
  rig.allowAnswers(0);
  rig.startTwoPoints(0);
  ASSERT_TRUE(rig.hears("G", 1));
  std::vector<std::future<void>> callers;
  for (std::size_t i = 1; i < expected.size(); ++i)
    callers.push_back(runUntilAsleep([&, i] { EXPECT_EQ(rig.driver->doRaw(expected[i]), 0); }));
  rig.allowAnswers(-1);
  callers.clear();  // which waits for them
  tLines begun = rig.sensor.getCommands();
  begun.resize(expected.size());
  EXPECT_EQ(begun, expected);
}

// Catches: a dead line that fills standard error while a counted scan retries; one that is not
// reported, that is tried no more once it is back, or not reported when it dies again or by a new
// start.
TEST(Scip1Recovery, DeadLineIsReportedOnce) {
  cPtyPair cable;
  cSensorDriverSCIP1 driver(tLink(new cTarvoLink(openPort(cable.getPath(), 20))));
  iSCIP2IF& scip2 = *driver.getSCIP2IF();
  const auto waitForAttempts = [&] {
    for (int attempt = 0; attempt < 4; ++attempt) EXPECT_TRUE(scip2.waitScan(LONG));
  };
  fcntl(cable.getSlave(), F_SETFL, O_NONBLOCK);
  std::string full;
  while (write(cable.getSlave(), "x", 1) == 1) full += 'x';
  testing::internal::CaptureStderr();
  scip2.startScan(0, 1, 1, 0, 9, 0);
  waitForAttempts();
  EXPECT_EQ(cable.receive(full.size() + 10), full + "G00000101\n");
  cable.hangUp();
  waitForAttempts();
  scip2.stopAll();
  scip2.getStoredScan(0, 1, 1, 0);
  waitForAttempts();
  const std::string printed = testing::internal::GetCapturedStderr();
  EXPECT_EQ(printed.substr(printed.find("basic_portbuf")),
            "basic_portbuf::write: Resource temporarily unavailable\n"
            "basic_portbuf::write: Input/output error\n"
            "basic_portbuf::write: Input/output error\n");
}

// Catches: a scan lost or taken twice where taking, counting and trimming meet; an answer, or half
// of it, read by another thread; a count below -1 that is not endless.
TEST_F(Scip1, TenThousandScansBesideCommands) {
  const std::string version = "VEND:maker;\nPROD:scanner;\n";
  rig.script("V", record("V", "0", version));
  rig.script("X", record("X", "7", "other\n"));
  rig.allowAnswers(28);  // scans that the sensor may be ahead, so that the limit drops none
  rig.startTwoPoints(INT_MIN);
  std::thread other([&] {
    for (int i = 0; i < 100; ++i) {
      rig.allowAnswers(1);
      EXPECT_EQ(i % 2 == 0 ? rig.driver->doRaw("X") - 7 : scip2.fetchVersionStr(), 0);
      const std::string body = rig.driver->getResponseBody();
      EXPECT_TRUE(body == version || body == "other\n" || body.size() == 5) << body;
    }
  });
  for (int number = 0; number < 10000 && !testing::Test::HasFailure(); ++number) {
    EXPECT_EQ(numberOf(takeScan(scip2)), number);
    rig.allowAnswers(1);
  }
  rig.allowAnswers(-1);
  other.join();
  EXPECT_EQ(rig.driver->getVend(), "maker;");
}
