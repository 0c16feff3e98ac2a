// The cable is pulled, at whatever the library is at; and the device comes back.

#include "tests/faults/cChild.h"
#include "tests/support/cCaseName.h"
#include "tests/tools/cTempFolder.h"

namespace {

constexpr int NONE = -1, ENDLESS = 0, COUNTED = 1000000;
constexpr auto SCIP1 = eSimDialect::SCIP1, SCIP2 = eSimDialect::SCIP2;

struct cRow {
  const char* name;
  eSimDialect dialect;
  int scans;  // of the scan under way
  void (*pull)(cFaultRig& rig);
};

void pull(cFaultRig& rig) { rig.sensor.unplug(); }

/// When a command has been heard, whose answer never comes.
void pullDuringCommand(cFaultRig& rig) {
  rig.sensor.setFault(eSimFault::NO_ANSWER);
  std::thread puller([&] {
    EXPECT_TRUE(rig.sensor.waitForCommand("V", LONG_TIME));
    rig.sensor.unplug();
  });
  rig.oracle.during("the waiting command", READ + ANSWER,
                    [&] { EXPECT_EQ(rig.face.fetchVersionStr(), -1); });
  puller.join();
}

/// After the first half of a record.
void pullInMidLine(cFaultRig& rig) {
  rig.sensor.setFault(eSimFault::CUT_SHORT, 101);
  const std::uint64_t before = rig.sensor.getCounters().records;
  EXPECT_TRUE(rig.sensor.waitFor(&cSimCounters::records, before + 2, LONG_TIME));
  rig.sensor.unplug();
}

void pullAndEnd(cFaultRig& rig) {
  rig.sensor.unplug();
  EXPECT_TRUE(eventually([&] { return !rig.face.isScanning(); }));
}

const cRow ROWS[] = {
    // Would catch: a command on a dead port that waits for ever, a worker that spins meanwhile.
    {"Idle", SCIP2, NONE, pull},
    {"IdleScip1", SCIP1, NONE, pull},
    // Would catch: a wait that the end of the port ends too early, or not at all.
    {"CommandWaiting", SCIP2, NONE, pullDuringCommand},
    {"CommandWaitingScip1", SCIP1, NONE, pullDuringCommand},
    // Would catch: half a record that becomes a scan, or that SCIP 1.x waits on.
    {"MidLine", SCIP2, ENDLESS, pullInMidLine},
    {"MidLineScip1", SCIP1, COUNTED, pullInMidLine},
    // Would catch: a worker that spins where records are still expected.
    {"ContinuousScan", SCIP2, ENDLESS, pull},
    // Would catch: an adapter that goes on asking a dead port without a pause between.
    {"PeriodZero", SCIP1, ENDLESS, pullAndEnd},
    {"PeriodZeroCounted", SCIP1, COUNTED, pull},
};

void expectBorne(const cRow& row) {
  cFaultRig rig(paced(row.dialect));
  if (row.scans != NONE) rig.scan(row.scans);
  row.pull(rig);
  const bool isScip1 = row.dialect == SCIP1;
  if (isScip1 || rig.face.isScanning()) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(1);
    rig.oracle.during("a while", 1100, [&] {
      rig.oracle.follow(rig.face, [end] { return std::chrono::steady_clock::now() > end; });
    });
  }
  rig.oracle.during("a command", isScip1 ? READ : ANSWER,
                    [&] { EXPECT_EQ(rig.face.fetchVersionStr(), -1); });
  rig.oracle.during("the end", READ, [&] { rig.driver.reset(); });
  EXPECT_EQ(rig.oracle.lies, 0);
}

class cGone : public testing::TestWithParam<cRow> {};

TEST_P(cGone, IsBorne) {
  runTest(GetParam().dialect, [] { expectBorne(GetParam()); });
}

INSTANTIATE_TEST_SUITE_P(Rows, cGone, testing::ValuesIn(ROWS), cCaseName());

/// One life of a driver, with a true scan in it and the cable pulled under it.
void liveOnce(cSimSensor& sensor, cFaultOracle& oracle, const std::string& path) {
  const eSimDialect dialect = sensor.getSetting().dialect;
  const tDriver driver = openAny(dialect, path);
  iSCIP2IF& face = *driver->getSCIP2IF();
  startScan(face, 1);
  oracle.expectTrueScan(face);
  // Half an answer of SCIP 1.x would end the process, and is another test's.
  EXPECT_TRUE(dialect == SCIP2 || eventually([&] { return !face.isScanning(); }));
  sensor.unplug();
}

// Would catch: a descriptor, a thread or memory that each life leaves behind, a driver gone whose
// port keeps the device's name taken, a next one that finds what the last one left.
TEST(cGoneAgain, ComesBackAHundredTimes) {
  for (const eSimDialect dialect : {SCIP2, SCIP1}) {
    const cTempFolder folder;
    cSimSetting setting = paced(dialect, 500);
    setting.link = folder / "sensor";
    cSimSensor sensor(setting);
    cFaultOracle oracle(sensor);
    int returns = 0;  // under the same path, unless another program takes the terminal's name
    for (int life = 0; life < 100; ++life) {
      const std::string path = sensor.getPath();
      liveOnce(sensor, oracle, life % 2 == 0 ? path : setting.link);
      sensor.plug();
      returns += sensor.getPath() == path ? 1 : 0;
    }
    EXPECT_GE(returns, 1);
    EXPECT_GE(oracle.truths, 100);
    EXPECT_EQ(oracle.lies, 0);
  }
}

}  // namespace
