// What the library takes of its process, and what it does when it does not get it.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <new>

#include "tests/faults/cFaultOracle.h"
#include "tests/faults/shim.h"
#include "tests/support/cCaseName.h"

namespace {

// --- scans that nobody takes -------------------------------------------------------------

/// Bytes by which `scans` more scans, none of them taken, let the process grow.
std::int64_t getGrowth(const cSimSensor& sensor, std::uint64_t scans) {
  const auto before = static_cast<std::int64_t>(countAllocated());
  EXPECT_TRUE(sensor.waitForSentScans(sensor.getCounters().scans + scans, LONG_TIME));
  return static_cast<std::int64_t>(countAllocated()) - before;
}

// Would catch: a scan that costs much more than its bytes, or memory that stays taken.
TEST(cUntakenScans, GrowByTheirBytesAndGoWhenTaken) {
  constexpr int SCANS = 1000;
  cSimSetting setting = paced();
  setting.paced = false;
  cSimSensor sensor(setting);
  cFaultOracle oracle(sensor);
  const tDriver2 driver = openReady(sensor.getPath());
  startScan(*driver);
  oracle.expectTrueScan(*driver);
  const std::int64_t growth = getGrowth(sensor, SCANS);
  EXPECT_LE(growth, SCANS * 3 * static_cast<std::int64_t>(POINTS) * 3);
  EXPECT_TRUE(stopLeftScan(*driver));
  while (driver->getScanNum() > 0) oracle.judge(distancesOf(driver->getScanFirst()));
  EXPECT_GE(oracle.truths, SCANS);
  EXPECT_EQ(oracle.lies, 0);
}

// Would catch: an adapter that keeps more than the newest 30 scans.
TEST(cUntakenScans, AreThirtyWithScip1) {
  cSimSetting setting = paced(eSimDialect::SCIP1);
  setting.paced = false;
  cSimSensor sensor(setting);
  cFaultOracle oracle(sensor);
  const tDriver1 driver = openDriver1(sensor.getPath());
  iSCIP2IF& adapter = *driver->getSCIP2IF();
  startScan(adapter);
  getGrowth(sensor, 60);
  EXPECT_LE(getGrowth(sensor, 500), 1 << 16);
  adapter.stopAll();
  EXPECT_TRUE(eventually([&] { return adapter.getScanNum() <= 30; }));
}

// --- a call that fails -------------------------------------------------------------------

struct cCall {
  const char* name;
  eSimDialect dialect;
};

std::ostream& operator<<(std::ostream& out, const cCall& call) { return out << call.name; }

constexpr int UNTOUCHED = 0, BORNE = 1, FAILED = 2;

void scanOnce(const std::string& path, cFaultOracle& oracle) {
  const tDriver driver = cSensorDriverManager::create(path);
  if (!driver) return;
  iSCIP2IF& face = *driver->getSCIP2IF();
  if (face.startScan(FIRST, LAST, 1, 0, 1, FAR) < 0) return;
  for (int waits = 0; waits < 3 && oracle.truths + oracle.told < 1; ++waits) {
    face.waitScan(300);
    while (face.getScanNum() > 0) oracle.judge(distancesOf(face.getScanFirst()));
  }
  face.stopAll();
  face.abortScan();
}

/// A whole run with the n-th call failing.
int run(const cCall& call, int n) {
  bool hasFailed = false;
  {
    const cSimSensor sensor(paced(call.dialect, 200));
    cFaultOracle oracle(sensor);
    shim::failNth(call.name, n);
    try {
      scanOnce(sensor.getPath(), oracle);
    } catch (const std::bad_alloc&) {
    }
    hasFailed = shim::hasFailed();
    EXPECT_EQ(oracle.lies, 0);
  }
  if (testing::Test::HasFailure()) return FAILED;
  return hasFailed ? BORNE : UNTOUCHED;
}

/// A run in a process of its own.
class cRun {
 public:
  cRun(const cCall& call, int count) : n(count), said(std::tmpfile()), child(fork()) {
    if (child != 0) return;
    dup2(fileno(said), STDOUT_FILENO);
    dup2(fileno(said), STDERR_FILENO);
    const int result = run(call, n);
    std::fflush(stdout);
    std::_Exit(result);
  }
  ~cRun() { std::fclose(said); }
  cRun(const cRun&) = delete;
  cRun& operator=(const cRun&) = delete;

  /// Waits for the end; whether nothing failed any more.
  bool wasUntouched() {
    int status = 0;
    waitpid(child, &status, 0);
    const std::string text = getText();
    const bool isMeant = WIFSIGNALED(status) && text.find("mixed response") != std::string::npos;
    const bool isClean = WIFEXITED(status) && WEXITSTATUS(status) < FAILED;
    EXPECT_TRUE(isClean || isMeant) << "the failing call is number " << n << "\n" << text;
    return isClean && WEXITSTATUS(status) == UNTOUCHED;
  }

 private:
  std::string getText() const {
    std::string text(1 << 14, '\0');
    std::rewind(said);
    text.resize(std::fread(text.data(), 1, text.size(), said));
    return text;
  }

  const int n;
  std::FILE* const said;
  const pid_t child;
};

class cFailingCall : public testing::TestWithParam<cCall> {};

// Would catch: a result that nobody looks at, and what a run without it does next.
TEST_P(cFailingCall, IsBorneWhicheverItIs) {
  constexpr int TOGETHER = 40;
  bool isOver = false;
  for (int n = 1; !isOver && !HasFailure(); n += TOGETHER) {
    std::vector<std::unique_ptr<cRun>> runs;
    for (int i = 0; i < TOGETHER; ++i) runs.push_back(std::make_unique<cRun>(GetParam(), n + i));
    for (const auto& one : runs) isOver = one->wasUntouched() || isOver;
  }
}

const cCall CALLS[] = {
    {"open", eSimDialect::SCIP2},      {"open", eSimDialect::SCIP1},
    {"tcgetattr", eSimDialect::SCIP2}, {"tcgetattr", eSimDialect::SCIP1},
    {"tcsetattr", eSimDialect::SCIP2}, {"tcsetattr", eSimDialect::SCIP1},
    {"poll", eSimDialect::SCIP2},      {"poll", eSimDialect::SCIP1},
    {"read", eSimDialect::SCIP2},      {"read", eSimDialect::SCIP1},
    {"write", eSimDialect::SCIP2},     {"write", eSimDialect::SCIP1},
    {"malloc", eSimDialect::SCIP2},    {"malloc", eSimDialect::SCIP1},
};

std::string nameOf(const testing::TestParamInfo<cCall>& info) {
  return info.param.name + std::string(info.param.dialect == eSimDialect::SCIP1 ? "Scip1" : "");
}

INSTANTIATE_TEST_SUITE_P(Calls, cFailingCall, testing::ValuesIn(CALLS), nameOf);

}  // namespace
