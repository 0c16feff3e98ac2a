// What the library takes of its process, and what it does when it does not get it.

#include <new>

#include "tests/faults/cChild.h"
#include "tests/faults/shim.h"

namespace {

// Would catch: a scan that nobody takes and that costs much more than its bytes, or memory that
// stays taken.
TEST(cUntakenScans, GrowByTheirBytesAndGoWhenTaken) {
  constexpr int SCANS = 1000;
  cFaultRig rig(paced(eSimDialect::SCIP2, 0));
  rig.scan();
  const std::size_t before = countAllocated();
  const std::uint64_t sent = rig.sensor.getCounters().scans;
  EXPECT_TRUE(rig.sensor.waitForSentScans(sent + SCANS, LONG_TIME));
  const std::size_t now = countAllocated();
  EXPECT_LE(now, before + 3 * POINTS * 3 * (rig.sensor.getCounters().scans - sent));
  EXPECT_TRUE(stopLeftScan(rig.face));
  rig.oracle.take(rig.face);
  EXPECT_GE(rig.oracle.truths, SCANS);
  EXPECT_EQ(rig.oracle.lies, 0);
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
