// The right bytes at the wrong time.

#include <sys/time.h>
#include <unistd.h>

#include "tests/faults/cChild.h"
#include "tests/faults/shim.h"
#include "tests/tools/cTempFolder.h"

namespace {

using cClock = std::chrono::steady_clock;

// --- a record in pieces ------------------------------------------------------------------

// Would catch: a reader that takes what one read gives for a line, a scan lost because its bytes
// come with the next one's.
TEST(cPieces, MakeWholeScans) {
  for (const auto& [fault, value] : {std::pair{eSimFault::BYTE_BY_BYTE, 20},  // us
                                     std::pair{eSimFault::BURSTS, 16}}) {     // ms
    cFaultRig rig(paced(eSimDialect::SCIP2, 40));
    rig.sensor.setFault(fault, value);
    ASSERT_EQ(startScan(rig.face, 40), 0);
    rig.oracle.follow(rig.face, [&] { return rig.oracle.truths == 40; });
    EXPECT_EQ(rig.oracle.told + rig.oracle.lies, 0);
    EXPECT_EQ(rig.face.fetchVersionStr(), 0);
  }
}

// --- both dialects -----------------------------------------------------------------------

class cBothDialects : public testing::TestWithParam<eSimDialect> {
 protected:
  iSCIP2IF& create() {
    driver = cSensorDriverManager::create(sensor.getPath());
    if (!driver) throw std::runtime_error("a healthy sensor is not found");
    return *driver->getSCIP2IF();
  }
  /// A wait for scans lasts its 400 ms when none come any more.
  void expectWait(iSCIP2IF& face) {
    const auto begin = cClock::now();
    oracle.during("a wait for scans", 2 * 400, [&] {
      while (face.waitScan(400)) oracle.take(face);
    });
    EXPECT_GE(cClock::now() - begin, std::chrono::milliseconds(400));
  }

  cSimSensor sensor{paced(GetParam())};
  cFaultOracle oracle{sensor};
  tDriver driver;
};

// Would catch: a line end, a status or a sum that is lost where two reads meet.
TEST_P(cBothDialects, BearASplitAnywhere) {
  cFaultRig rig(paced(GetParam(), 0));
  rig.sensor.setFault(eSimFault::SPLIT_PAUSE, 1);
  ASSERT_EQ(rig.face.startStoringScan(), 0);
  for (std::size_t place = 1; place < 60; ++place) {
    rig.sensor.setFault(eSimFault::SPLIT, static_cast<int>(place));
    ASSERT_EQ(rig.driver->getSCIP1IF()->doVersion(), 0) << place;
    ASSERT_EQ(rig.driver->getSCIP1IF()->doScan(FIRST, FIRST + 9, 1), 0) << place;
    ASSERT_EQ(distancesOf(rig.face.getScanFirst()),
              truth(rig.sensor, place - 1, FIRST, FIRST + 9, 1, NEAR));
  }
}

// Would catch: a call that EINTR ends or fails, a wait that begins anew with each signal.
TEST_P(cBothDialects, BearAStormOfSignals) {
  struct sigaction action = {};
  action.sa_handler = [](int) {};  // without SA_RESTART
  sigaction(SIGALRM, &action, nullptr);
  const itimerval storm = {{0, 1000}, {0, 1000}};
  setitimer(ITIMER_REAL, &storm, nullptr);
  iSCIP2IF& face = create();
  sensor.setFault(eSimFault::LATE, 50);
  EXPECT_EQ(face.fetchVersionStr(), 0);
  sensor.clearFaults();
  EXPECT_GE(startScan(face), 0);
  while (oracle.truths < 20 && !HasFailure()) oracle.expectTrueScan(face);
  sensor.setFault(eSimFault::STALL);
  expectWait(face);
  const itimerval calm = {};
  setitimer(ITIMER_REAL, &calm, nullptr);
  EXPECT_EQ(oracle.truths, static_cast<int>(sensor.getCounters().scans));
}

// Would catch: a wait that ends an hour late, or at once, or a period that is made up for.
TEST_P(cBothDialects, BearAWallClockThatIsSet) {
  constexpr int PERIOD = 200;  // milliseconds: of SCIP 1.x, which asks for each scan
  iSCIP2IF& face = create();
  EXPECT_GE(startScan(face, 0, FAR, 2), 0);
  oracle.expectTrueScan(face);
  for (const long step : {3600L, -7200L, 3600L}) {
    const auto begin = cClock::now();
    const std::size_t before = sensor.getCommands().size();
    shim::stepWallClock(step);
    for (int scan = 0; scan < 5; ++scan) oracle.expectTrueScan(face);
    const auto asked = static_cast<long>(sensor.getCommands().size() - before);
    EXPECT_LE(asked, (cClock::now() - begin) / std::chrono::milliseconds(PERIOD) + 2);
  }
  sensor.setFault(eSimFault::STALL);
  for (const long step : {3600L, -3600L}) {
    std::thread setter([step] { shim::stepWallClock(step); });
    expectWait(face);
    setter.join();
  }
  EXPECT_EQ(oracle.told + oracle.lies, 0);
}

INSTANTIATE_TEST_SUITE_P(Dialects, cBothDialects, DIALECTS,
                         [](const testing::TestParamInfo<eSimDialect>& dialect) {
                           return dialect.param == eSimDialect::SCIP2 ? "Scip2" : "Scip1";
                         });

// --- a pause, of the sensor or the host --------------------------------------------------

// Would catch: a pause that ends a record before its time, the half of one glued to the next.
TEST(cPauseWithinARecord, CostsItWhenLongerThanTheReadTimeOut) {
  cFaultRig rig(paced());
  rig.sensor.setFault(eSimFault::SPLIT, 150, "scan");
  for (const int pause : {READ - 100, READ + 100}) {
    rig.sensor.setFault(eSimFault::SPLIT_PAUSE, pause);
    const int before = rig.oracle.truths;
    const double starved = getStarvedSeconds();
    ASSERT_EQ(startScan(rig.face, 2), 0);
    rig.oracle.during("two slow scans", 2 * ANSWER, [&] {
      for (int scan = 0; scan < 2; ++scan)
        if (rig.face.waitScan(ANSWER)) rig.oracle.judge(distancesOf(rig.face.getScanFirst()));
    });
    EXPECT_TRUE(rig.oracle.truths - before == (pause < READ ? 2 : 0) ||
                getStarvedSeconds() - starved > 0.05)
        << pause;
    rig.face.abortScan();
  }
  EXPECT_EQ(rig.oracle.lies, 0);
}

/// A host of a sensor at `path`, as soon as there is one, that expects scans of `same` sensor's,
/// one later than the other.
void runHost(const std::string& path, const cSimSetting& same) {
  EXPECT_TRUE(eventually([&] { return std::filesystem::exists(path); }));
  const tDriver2 driver = openReady(path);
  const cSimSensor sensor(same);
  startScan(*driver);
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
