// What the library takes of its process, and what it does when it does not get it.

#include <malloc.h>

#include <new>

#include "tests/faults/cChild.h"
#include "tests/support/syscalls.h"

namespace {

/// Bytes allocated in this process; 0 under a sanitizer.
std::size_t countAllocated() {
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

// Catches: scans kept that no call can take any more.
TEST(AbortedScan, CostsNoMemoryWhereItGoesOn) {
  cFaultRig rig(turning());
  rig.scan();
  rig.sensor.setFault(eSimFault::NO_ANSWER, cSimSensor::DEFAULT_VALUE, "QT");
  EXPECT_EQ(rig.face().abortScan(), -1);
  const std::vector<std::string> commands = rig.sensor.getCommands();
  const std::string scan = commands.at(commands.size() - 2) + "\n99b\n" + std::string(999, '0');
  const std::size_t before = countAllocated();
  for (int count = 0; count < 300; ++count) rig.sensor.inject(scan + "\n\n");  // it missed the "QT"
  ASSERT_EQ(rig.face().fetchVersionStr(), 0);  // so all of them have come
  EXPECT_LE(countAllocated(), before + (1 << 16));
}

constexpr int UNTOUCHED = 1;  // a run in which nothing failed

/// A whole run with the n-th call failing.
void run(const char* call, eSimDialect dialect, int n) {
  cFaultRig rig(turning(200, dialect), false);
  syscalls::failNth(call, n);
  try {
    rig.driver = cSensorDriverManager::create(rig.sensor.getPath());
    if (rig.driver && rig.face().startScan(FIRST, LAST, 1, 0, 1, FAR) >= 0) {
      rig.face().waitScan(3 * READ);
      rig.take();
      rig.face().stopAll();
      rig.face().abortScan();
    }
    rig.driver.reset();
  } catch (const std::bad_alloc&) {
  }
  cChild::outcome = syscalls::hasFailed() ? 0 : UNTOUCHED;
  EXPECT_EQ(rig.wrong, 0) << call << " number " << n << " failed";
}

class FailingCall : public testing::TestWithParam<const char*> {};

// Catches: a result that nobody looks at, and what a run does next.
TEST_P(FailingCall, IsHandled) {
  for (const eSimDialect dialect : {SCIP2, SCIP1}) {
    int handled = 0;
    int untouched = 0;
    for (int n = 1; untouched == 0 && !HasFailure(); n += 40) {
      std::vector<std::unique_ptr<cChild>> runs;
      for (int i = n; i < n + 40; ++i)
        runs.push_back(std::make_unique<cChild>([=] { run(GetParam(), dialect, i); }));
      for (const auto& one : runs) ++(one->expectGoodEnd() == UNTOUCHED ? untouched : handled);
    }
    EXPECT_TRUE(handled > 0 || (IS_SLOW && GetParam() == std::string("malloc")));
  }
}

INSTANTIATE_TEST_SUITE_P(Calls, FailingCall,
                         testing::Values("open",       // a port of number -1
                                         "tcgetattr",  // modes made of what is on the stack
                                         "tcsetattr",  // a search that goes on at no speed
                                         "poll",       // a wait taken for silence or for bytes
                                         "read",       // -1 bytes in the buffer
                                         "write",      // an answer awaited to what was not sent
                                         "malloc"),    // an exception out of a thread, a lock kept
                         [](const auto& call) { return std::string(call.param); });

}  // namespace
