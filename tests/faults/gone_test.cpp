// The cable is pulled, whatever the library is doing; and the device comes back.

#include "tests/faults/cChild.h"
#include "tests/support/cCaseName.h"
#include "tests/tools/cTempFolder.h"

namespace {

constexpr int NONE = -1, ENDLESS = 0, COUNTED = 99;

struct cRow {
  const char* name;
  int scans;  // of the scan under way
  void (*pull)(cFaultRig& rig);
};

void pull(cFaultRig& rig) { rig.sensor.unplug(); }

/// Once the sensor has received a command, whose answer never comes.
void pullDuringCommand(cFaultRig& rig) {
  rig.sensor.setFault(eSimFault::NO_ANSWER);
  std::thread puller([&] {
    EXPECT_TRUE(rig.sensor.waitForCommand("V", LONG_TIME));
    rig.sensor.unplug();
  });
  rig.during("the waiting command", READ + ANSWER,
             [&] { EXPECT_EQ(rig.face().fetchVersionStr(), -1); });
  puller.join();
}

/// After the first half of a record.
void pullInMidLine(cFaultRig& rig) {
  rig.sensor.setFault(eSimFault::CUT_SHORT, 101);
  const std::uint64_t before = rig.sensor.getCounters().records;
  EXPECT_TRUE(rig.sensor.waitFor(&cSimCounters::records, before + 2, LONG_TIME));
  rig.sensor.unplug();
}

void pullAndPlug(cFaultRig& rig) {
  rig.sensor.unplug();
  rig.sensor.plug();
}

// Catches:
const cRow ROWS[] = {
    {"Idle", NONE, pull},                         // a command on a dead port that waits for ever
    {"CommandWaiting", NONE, pullDuringCommand},  // a wait that ends too early, or not at all
    {"MidLine", COUNTED, pullInMidLine},  // half a record made a scan, or that SCIP 1.x waits on
    {"ContinuousScan", ENDLESS, pull},    // a worker that spins where records are still expected
    {"PeriodZero", COUNTED, pull},        // an adapter that asks a dead port again without a pause
    {"IsBack", NONE, pullAndPlug},  // a driver that opens its path again, as if it were scanning
};

class Cable : public testing::TestWithParam<cRow> {};

TEST_P(Cable, MayBePulled) {
  const cTempFolder folder;  // not the child's, whose end may be an assertion
  inBothDialects([&row = GetParam(), &folder](eSimDialect dialect) {
    cSimSetting setting = paced(dialect);
    setting.link = folder / "sensor";  // which stays the same where the terminal's number changes
    cFaultRig rig(setting);
    if (row.scans != NONE) rig.scan(row.scans);
    row.pull(rig);
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(1);
    const auto isOver = [end] { return std::chrono::steady_clock::now() > end; };
    if (row.scans != NONE) rig.during("a while", 1100, [&] { rig.follow(isOver); });
    rig.during("a command", dialect == SCIP1 ? READ : ANSWER,
               [&] { EXPECT_EQ(rig.face().fetchVersionStr(), -1); });
    rig.during("the end", READ, [&] { rig.driver.reset(); });
    EXPECT_EQ(rig.wrong, 0);
  });
}

INSTANTIATE_TEST_SUITE_P(Rows, Cable, testing::ValuesIn(ROWS), cCaseName());

// Catches: a descriptor, a thread or memory that each life leaves behind, a driver gone whose port
// keeps the device's name taken, a next one that finds what the last one left.
TEST(Unplugged, LeavesNothingBehindIn500Lives) {
  for (const eSimDialect dialect : {SCIP2, SCIP1}) {
    cFaultRig rig(paced(dialect, 500), false);
    long memory = 0;  // after the hundredth life
    int returns = 0;  // under the same path, unless another program takes the terminal's name
    for (int life = 0; life < 500; ++life) {
      const std::string path = rig.sensor.getPath();
      rig.open(path);
      rig.scan(dialect == SCIP2 ? ENDLESS : 1);
      // Half an answer of SCIP 1.x would end the process, and is another test's.
      EXPECT_TRUE(dialect == SCIP2 || eventually([&] { return !rig.face().isScanning(); }));
      rig.sensor.unplug();
      rig.driver.reset();
      rig.sensor.plug();
      returns += rig.sensor.getPath() == path ? 1 : 0;
      if (life == 99) memory = rig.countMemory();
    }
    EXPECT_LE(rig.countMemory(), memory + (1 << 15)) << "but what the allocator keeps";
    EXPECT_GE(returns, 1);
    EXPECT_EQ(rig.wrong, 0);
  }
}

}  // namespace
