// What the library takes of its process, and what it does when it does not get it.

#include <new>

#include "tests/faults/cChild.h"
#include "tests/faults/cFaultRig.h"
#include "tests/faults/shim.h"

namespace {

// --- scans that nobody takes -------------------------------------------------------------

/// Bytes by which each of `scans` more scans, none of them taken, lets the process grow.
double getGrowth(const cSimSensor& sensor, std::uint64_t scans) {
  const std::uint64_t sent = sensor.getCounters().scans;
  const auto before = static_cast<double>(countAllocated());
  EXPECT_TRUE(sensor.waitForSentScans(sent + scans, LONG_TIME));
  const double grown = static_cast<double>(countAllocated()) - before;
  return grown / static_cast<double>(sensor.getCounters().scans - sent);
}

// Would catch: a scan that costs much more than its bytes, or memory that stays taken.
TEST(cUntakenScans, GrowByTheirBytesAndGoWhenTaken) {
  constexpr int SCANS = 1000;
  cFaultRig rig(paced(eSimDialect::SCIP2, 0));
  rig.scan();
  EXPECT_LE(getGrowth(rig.sensor, SCANS), 3.0 * POINTS * 3);
  EXPECT_TRUE(stopLeftScan(rig.face));
  rig.oracle.take(rig.face);
  EXPECT_GE(rig.oracle.truths, SCANS);
  EXPECT_EQ(rig.oracle.lies, 0);
}

// Would catch: an adapter that keeps more than the newest 30 scans.
TEST(cUntakenScans, AreThirtyWithScip1) {
  cFaultRig rig(paced(eSimDialect::SCIP1, 0));
  startScan(rig.face);
  getGrowth(rig.sensor, 60);
  EXPECT_LE(500 * getGrowth(rig.sensor, 500), 1 << 16);
  rig.face.stopAll();
  EXPECT_TRUE(eventually([&] { return rig.face.getScanNum() <= 30; }));
}

// --- a call that fails -------------------------------------------------------------------

constexpr int UNTOUCHED = 1;  // a run in which nothing failed

void scanOnce(const std::string& path, cFaultOracle& oracle) {
  const tDriver driver = cSensorDriverManager::create(path);
  if (!driver) return;
  iSCIP2IF& face = *driver->getSCIP2IF();
  if (face.startScan(FIRST, LAST, 1, 0, 1, FAR) < 0) return;
  for (int waits = 0; waits < 3 && oracle.truths + oracle.told < 1; ++waits) {
    face.waitScan(300);
    oracle.take(face);
  }
  face.stopAll();
  face.abortScan();
}

/// A whole run with the n-th call failing.
void run(const char* call, eSimDialect dialect, int n) {
  const cSimSensor sensor(paced(dialect, 200));
  cFaultOracle oracle(sensor);
  shim::failNth(call, n);
  try {
    scanOnce(sensor.getPath(), oracle);
  } catch (const std::bad_alloc&) {
  }
  cChild::outcome = shim::hasFailed() ? 0 : UNTOUCHED;
  EXPECT_EQ(oracle.lies, 0) << call << " number " << n << " failed";
}

struct cCall {
  const char* name;
};

class cFailingCall : public testing::TestWithParam<std::tuple<cCall, eSimDialect>> {};

// Would catch: a result that nobody looks at, and what a run without it does next.
TEST_P(cFailingCall, IsBorneWhicheverItIs) {
  constexpr int TOGETHER = 40;
  const auto& [call, dialect] = GetParam();
  int borne = 0;
  int untouched = 0;
  for (int n = 1; untouched == 0 && !HasFailure(); n += TOGETHER) {
    std::vector<std::unique_ptr<cChild>> runs;
    for (int i = n; i < n + TOGETHER; ++i)
      runs.push_back(std::make_unique<cChild>(std::bind(run, call.name, dialect, i)));
    for (const auto& one : runs) ++(one->expectGoodEnd() == UNTOUCHED ? untouched : borne);
  }
  EXPECT_TRUE(borne > 0 || (IS_SANITIZED && call.name == std::string("malloc")));
}

constexpr cCall CALLS[] = {{"open"}, {"tcgetattr"}, {"tcsetattr"}, {"poll"},
                           {"read"}, {"write"},     {"malloc"}};

INSTANTIATE_TEST_SUITE_P(Calls, cFailingCall, testing::Combine(testing::ValuesIn(CALLS), DIALECTS),
                         cRowName());

}  // namespace
