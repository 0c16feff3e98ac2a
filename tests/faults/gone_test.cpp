// The cable is pulled, whatever the library is doing.

#include "tests/faults/cChild.h"
#include "tests/support/cCaseName.h"

namespace {

constexpr int NONE = -1, ENDLESS = 0, COUNTED = 99;

struct cRow {
  const char* name;
  int scans;  // of the scan under way
  bool isInMidLine = false;
};

// Catches:
const cRow ROWS[] = {
    {"Idle", NONE},               // a command on a dead port that waits for ever
    {"MidLine", COUNTED, true},   // half a record made a scan, or that SCIP 1.x waits on
    {"ContinuousScan", ENDLESS},  // a worker that spins where records are still expected
    {"PeriodZero", COUNTED},      // an adapter that asks a dead port again without a pause
};

/// After the first half of a record.
void waitForHalfARecord(cSimSensor& sensor) {
  sensor.setFault(eSimFault::CUT_SHORT, 101);
  const std::uint64_t before = sensor.getCounters().records;
  EXPECT_TRUE(sensor.waitFor(&cSimCounters::records, before + 2, LONG_TIME));
}

class Cable : public testing::TestWithParam<cRow> {};

TEST_P(Cable, MayBePulled) {
  inBothDialects([&row = GetParam()](eSimDialect dialect) {
    cFaultRig rig(turning(50, dialect));
    if (row.scans != NONE) rig.scan(row.scans);
    if (row.isInMidLine) waitForHalfARecord(rig.sensor);
    rig.sensor.unplug();
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

}  // namespace
