// The right bytes at the wrong time.

#include <sys/time.h>
#include <unistd.h>

#include "tests/faults/cChild.h"
#include "tests/support/syscalls.h"
#include "tests/tools/cTempFolder.h"

namespace {

using cClock = std::chrono::steady_clock;

// --- a record in pieces ------------------------------------------------------------------

struct cPieces {
  const char* name;
  eSimFault fault;
  int value;
  int pause;  // milliseconds
  int scans;
  int truths;
};

// Would catch: what one read gives taken for a line; a scan lost because its bytes come with the
// next one's; a pause that ends a record before its time; the half of one glued to the next.
TEST(cPiecesOfARecord, AreWholeWithinTheReadTimeOut) {
  for (const cPieces& row : {cPieces{"byte by byte", eSimFault::BYTE_BY_BYTE, 20, 0, 40, 40},
                             cPieces{"bursts", eSimFault::BURSTS, 16, 0, 40, 40},
                             cPieces{"short pause", eSimFault::SPLIT, 150, READ - 100, 2, 2},
                             cPieces{"long pause", eSimFault::SPLIT, 150, READ + 100, 2, 0}}) {
    cOpenRig rig(paced(SCIP2, 40));
    rig.sensor.setFault(eSimFault::SPLIT_PAUSE, row.pause);
    rig.sensor.setFault(row.fault, row.value, "scan");
    const double starved = getStarvedSeconds();
    ASSERT_EQ(rig.startScan(row.scans), 0);
    while (rig.truths < row.scans && rig.face().waitScan(ANSWER)) rig.take();
    const bool isStarved = row.pause > 0 && getStarvedSeconds() - starved > 0.05;
    EXPECT_TRUE(rig.truths == row.truths || isStarved) << row.name << rig.truths;
    EXPECT_EQ(rig.lies, 0) << row.name;
  }
}

// Would catch: a line end, a status or a sum that is lost where two reads meet.
TEST(cSplitRecord, IsWholeWhereverItIsSplit) {
  inBothDialects([](eSimDialect dialect) {
    cOpenRig rig(paced(dialect, 0));
    rig.sensor.setFault(eSimFault::SPLIT_PAUSE, 1);
    ASSERT_EQ(rig.face().startStoringScan(), 0);
    for (std::size_t place = 1; place < 60; ++place) {
      rig.sensor.setFault(eSimFault::SPLIT, static_cast<int>(place));
      ASSERT_EQ(rig.driver->getSCIP1IF()->doVersion(), 0) << place;
      ASSERT_EQ(rig.driver->getSCIP1IF()->doScan(FIRST, FIRST + 9, 1), 0) << place;
      ASSERT_EQ(distancesOf(rig.face().getScanFirst()),
                truth(rig.sensor, place - 1, FIRST, FIRST + 9, 1, NEAR));
    }
  });
}

// --- no answer ---------------------------------------------------------------------------

struct cCall {
  const char* name;
  int limit;  // milliseconds in SCIP 2.0; the adapter of SCIP 1.x asks in its own thread
  int (*call)(iSCIP2IF& face);
};

const cCall CALLS[] = {
    {"startScan", 200, [](iSCIP2IF& face) { return face.startScan(FIRST, LAST, 1, 0, 0, FAR); }},
    {"stopAll", ANSWER, [](iSCIP2IF& face) { return face.stopAll(); }},
    {"abortScan", ANSWER, [](iSCIP2IF& face) { return face.abortScan(); }},
    {"getStoredScan", ANSWER,
     [](iSCIP2IF& face) { return face.getStoredScan(FIRST, LAST, 1, FAR); }},
    {"startStoringScan", ANSWER, [](iSCIP2IF& face) { return face.startStoringScan(); }},
};

// Would catch: a call with another's time-out, or that waits once more for each thing it sends.
TEST(cMuteSensor, CostsEachCallItsTimeOut) {
  inBothDialects([](eSimDialect dialect) {
    cOpenRig rig(paced(dialect));
    rig.scan();
    rig.sensor.setFault(eSimFault::STALL);
    for (const cCall& row : CALLS) {
      const int limit = dialect == SCIP1 ? 0 : row.limit;
      const auto begin = cClock::now();
      int result = 0;
      rig.during(row.name, limit + (limit > 0 ? READ : 0), [&] { result = row.call(rig.face()); });
      EXPECT_GE(cClock::now() - begin, std::chrono::milliseconds(limit)) << row.name;
      EXPECT_TRUE(result == -1 || dialect == SCIP1) << row.name;
    }
  });
}

// --- signals and clocks ------------------------------------------------------------------

/// A wait for scans lasts its 400 ms when none come any more.
void expectWait(cFaultRig& rig) {
  const auto begin = cClock::now();
  rig.during("a wait for scans", 2 * 400, [&] {
    while (rig.face().waitScan(400)) rig.take();
  });
  EXPECT_GE(cClock::now() - begin, std::chrono::milliseconds(400));
}

// Would catch: a call that EINTR ends or fails, a wait that begins anew with each signal.
TEST(cStormOfSignals, IsBorne) {
  inBothDialects([](eSimDialect dialect) {
    cFaultRig rig(paced(dialect));
    struct sigaction action = {};
    action.sa_handler = [](int) {};  // without SA_RESTART
    sigaction(SIGALRM, &action, nullptr);
    const itimerval storm = {{0, 1000}, {0, 1000}};
    setitimer(ITIMER_REAL, &storm, nullptr);
    rig.detect();
    ASSERT_TRUE(rig.driver);
    rig.sensor.setFault(eSimFault::LATE, 50);
    EXPECT_EQ(rig.face().fetchVersionStr(), 0);
    rig.sensor.clearFaults();
    EXPECT_GE(rig.startScan(), 0);
    while (rig.truths < 20 && !testing::Test::HasFailure()) rig.expectTrueScan();
    rig.sensor.setFault(eSimFault::STALL);
    expectWait(rig);
    const itimerval calm = {};
    setitimer(ITIMER_REAL, &calm, nullptr);
    EXPECT_EQ(rig.truths, static_cast<int>(rig.sensor.getCounters().scans));
  });
}

// Would catch: a wait that ends an hour late, or at once, or a period that is made up for.
TEST(cWallClockThatIsSet, IsBorne) {
  inBothDialects([](eSimDialect dialect) {
    constexpr int INTERVAL = 2;  // a scan each 200 ms: after three turns, or two tenths of a second
    cOpenRig rig(paced(dialect, 15));
    rig.scan(0, FAR, INTERVAL);
    for (const long step : {3600L, -7200L, 3600L}) {
      const auto begin = cClock::now();
      syscalls::stepWallClock(step);
      for (int scan = 0; scan < 5; ++scan) rig.expectTrueScan();
      EXPECT_GE(cClock::now() - begin, std::chrono::milliseconds(3 * 200));
    }
    rig.sensor.setFault(eSimFault::STALL);
    for (const long step : {3600L, -3600L}) {
      std::thread setter([step] { syscalls::stepWallClock(step); });
      expectWait(rig);
      setter.join();
    }
    EXPECT_EQ(rig.told + rig.lies, 0);
  });
}

// --- a host that stops -------------------------------------------------------------------

/// A host of a sensor at `path`, as soon as there is one, that expects scans of `same` sensor's,
/// one later than the other.
void runHost(const std::string& path, const cSimSetting& same) {
  EXPECT_TRUE(eventually([&] { return std::filesystem::exists(path); }));
  const tDriver2 driver = openReady(path);
  const cSimSensor sensor(same);
  surely(*driver, [&] { return driver->startScan(FIRST, LAST, 1, 0, 0, FAR); });
  std::uint32_t number = 0;
  for (int scan = 0; scan < 40; ++scan) {  // about twelve were on their way when it was stopped
    const std::vector<int> distances = distancesOf(takeScan(*driver));
    while (sensor.getTrueDistances(++number, FIRST, LAST, 1) != distances)
      ASSERT_LT(number, 2000U) << "no scan of the sensor's";
  }
}

// Would catch: a host that, once it goes on, takes halves of two records for one scan.
TEST(cStoppedHost, GoesOn) {
  const cTempFolder folder;
  const cSimSetting alone = paced();
  cSimSetting setting = alone;
  setting.link = folder / "sensor";
  const cChild host([&] { runHost(setting.link, alone); });
  const cSimSensor sensor(setting);
  EXPECT_TRUE(sensor.waitForSentScans(1, LONG_TIME));
  host.signal(SIGSTOP);
  // Two seconds of scans that nobody reads: most of them find no room.
  EXPECT_TRUE(sensor.waitFor(&cSimCounters::skippedScans, 80, LONG_TIME));
  host.signal(SIGCONT);
  host.expectGoodEnd();
}

}  // namespace
