// What the library takes of its process, and what it does when it does not get it.

#include <new>

#include "tests/faults/cChild.h"
#include "tests/support/syscalls.h"

namespace {

// Would catch: a scan that nobody takes and that costs much more than its bytes, or memory that
// stays taken.
TEST(cUntakenScans, GrowByTheirBytesAndGoWhenTaken) {
  constexpr int SCANS = 1000;
  cOpenRig rig(paced(SCIP2, 0));
  rig.scan();
  const std::size_t before = countAllocated();
  const std::uint64_t sent = rig.sensor.getCounters().scans;
  EXPECT_TRUE(rig.sensor.waitForSentScans(sent + SCANS, LONG_TIME));
  const std::size_t now = countAllocated();
  EXPECT_LE(now, before + 3 * POINTS * 3 * (rig.sensor.getCounters().scans - sent));
  EXPECT_TRUE(stopLeftScan(rig.face()));
  rig.take();
  EXPECT_GE(rig.truths, SCANS);
  EXPECT_EQ(rig.lies, 0);
}

// Would catch: scans kept that no call can take any more.
TEST(cAbortedScan, CostsNoMemoryWhereItGoesOn) {
  cOpenRig rig(paced());
  rig.scan();
  rig.sensor.setFault(eSimFault::NO_ANSWER, cSimSensor::DEFAULT_VALUE, "QT");
  EXPECT_EQ(rig.face().abortScan(), -1);
  const std::vector<std::string> commands = rig.sensor.getCommands();
  const std::string scan = commands.at(commands.size() - 2) + "\n99b\n" + std::string(999, '0');
  const std::size_t before = countAllocated();
  for (int count = 0; count < 300; ++count) rig.sensor.say(scan + "\n\n");  // it missed the "QT"
  ASSERT_EQ(rig.face().fetchVersionStr(), 0);  // so all of them have come
  EXPECT_LE(countAllocated(), before + (1 << 16));
}

// --- a call that fails -------------------------------------------------------------------

constexpr int UNTOUCHED = 1;  // a run in which nothing failed

void scanOnce(cFaultRig& rig) {
  rig.detect();
  if (!rig.driver || rig.face().startScan(FIRST, LAST, 1, 0, 1, FAR) < 0) return;
  for (int waits = 0; waits < 3 && rig.truths + rig.told < 1; ++waits) {
    rig.face().waitScan(300);
    rig.take();
  }
  rig.face().stopAll();
  rig.face().abortScan();
}

/// A whole run with the n-th call failing.
void run(const char* call, eSimDialect dialect, int n) {
  cFaultRig rig(paced(dialect, 200));
  syscalls::failNth(call, n);
  try {
    scanOnce(rig);
    rig.driver.reset();
  } catch (const std::bad_alloc&) {
  }
  cChild::outcome = syscalls::hasFailed() ? 0 : UNTOUCHED;
  EXPECT_EQ(rig.lies, 0) << call << " number " << n << " failed";
}

class cFailingCall : public testing::TestWithParam<const char*> {};

// Each call would catch that nobody looks at its result, and what a run does next.
TEST_P(cFailingCall, IsBorneWhicheverItIs) {
  constexpr int TOGETHER = 40;
  for (const eSimDialect dialect : {SCIP2, SCIP1}) {
    int borne = 0;
    int untouched = 0;
    for (int n = 1; untouched == 0 && !HasFailure(); n += TOGETHER) {
      std::vector<std::unique_ptr<cChild>> runs;
      for (int i = n; i < n + TOGETHER; ++i)
        runs.push_back(std::make_unique<cChild>([=] { run(GetParam(), dialect, i); }));
      for (const auto& one : runs) ++(one->expectGoodEnd() == UNTOUCHED ? untouched : borne);
    }
    EXPECT_TRUE(borne > 0 || (IS_SANITIZED && GetParam() == std::string("malloc")));
  }
}

INSTANTIATE_TEST_SUITE_P(Calls, cFailingCall,
                         testing::Values("open",       // a port of number -1
                                         "tcgetattr",  // modes made of what is on the stack
                                         "tcsetattr",  // a search that goes on at no speed
                                         "poll",       // a wait taken for silence or for bytes
                                         "read",       // -1 bytes in the buffer
                                         "write",      // an answer awaited to what was not sent
                                         "malloc"),    // an exception out of a thread, a lock kept
                         [](const auto& call) { return std::string(call.param); });

}  // namespace
