// The right bytes at the wrong time.

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/faults/cFaultOracle.h"
#include "tests/faults/shim.h"
#include "tests/support/cCaseName.h"

namespace {

// --- a record in pieces ------------------------------------------------------------------

struct cRow {
  const char* name;
  eSimFault fault;
  int value;
};

std::ostream& operator<<(std::ostream& out, const cRow& row) { return out << row.name; }

const cRow ROWS[] = {
    // Would catch: a reader that takes what one read gives for a line.
    {"ByteByByte", eSimFault::BYTE_BY_BYTE, 20},
    // Would catch: a scan lost because its bytes come with the next one's.
    {"Bursts", eSimFault::BURSTS, 16},
};

class cPieces : public testing::TestWithParam<cRow> {};

TEST_P(cPieces, MakeWholeScans) {
  cSimSensor sensor(paced(eSimDialect::SCIP2, 40));
  cFaultOracle oracle(sensor);
  sensor.setFault(GetParam().fault, GetParam().value);
  const tDriver2 driver = openReady(sensor.getPath());
  ASSERT_EQ(startScan(*driver, 40), 0);
  oracle.follow(*driver, [&] { return oracle.truths + oracle.told + oracle.lies == 40; });
  EXPECT_EQ(oracle.truths, 40);
  // SCIP 1.x: what comes in one record.
  EXPECT_EQ(driver->fetchVersionStr(), 0);
}

INSTANTIATE_TEST_SUITE_P(Rows, cPieces, testing::ValuesIn(ROWS), cCaseName());

// Would catch: a line end, a status or a sum that is lost where two reads meet.
TEST(cSplitRecord, IsWholeWhereverItIsSplit) {
  for (const eSimDialect dialect : {eSimDialect::SCIP2, eSimDialect::SCIP1}) {
    cSimSetting setting = paced(dialect);
    setting.paced = false;
    cSimSensor sensor(setting);
    cFaultOracle oracle(sensor);
    sensor.setFault(eSimFault::SPLIT_PAUSE, 1);
    tDriver driver;
    if (dialect == eSimDialect::SCIP2) {
      driver = openReady(sensor.getPath());
    } else {
      driver = openDriver1(sensor.getPath());
    }
    iSCIP2IF& face = *driver->getSCIP2IF();
    ASSERT_EQ(face.startStoringScan(), 0);
    for (std::size_t place = 1; place < 60; ++place) {
      sensor.setFault(eSimFault::SPLIT, static_cast<int>(place));
      ASSERT_EQ(driver->getSCIP1IF()->doVersion(), 0) << place;
      ASSERT_EQ(driver->getSCIP1IF()->doScan(FIRST, FIRST + 9, 1), 0) << place;
      ASSERT_EQ(distancesOf(face.getScanFirst()),
                truth(sensor, place - 1, FIRST, FIRST + 9, 1, NEAR));
    }
  }
}

// Would catch: a pause that ends a record before its time, the half of one glued to the next.
TEST(cPauseWithinARecord, CostsItWhenLongerThanTheReadTimeOut) {
  constexpr int TIME_OUT = 600;
  cSimSensor sensor(paced());
  cFaultOracle oracle(sensor);
  const auto link = openLink(sensor.getPath());
  link->portbuf->readTimeout = TIME_OUT;
  cSensorDriverSCIP2 driver(link);
  driver.start();
  ASSERT_EQ(driver.fetchParameters(), 0);
  sensor.setFault(eSimFault::SPLIT, 150, "scan");
  for (const int pause : {TIME_OUT - 100, TIME_OUT + 100}) {
    sensor.setFault(eSimFault::SPLIT_PAUSE, pause);
    const int before = oracle.truths;
    const double starved = getStarvedSeconds();
    ASSERT_EQ(startScan(driver, 2), 0);
    oracle.during("two slow scans", 2 * ANSWER, [&] {
      for (int scan = 0; scan < 2; ++scan) {
        if (driver.waitScan(ANSWER)) oracle.judge(distancesOf(driver.getScanFirst()));
      }
    });
    if (getStarvedSeconds() - starved < 0.05) {
      EXPECT_EQ(oracle.truths - before, pause < TIME_OUT ? 2 : 0);
    }
    driver.abortScan();
  }
  EXPECT_EQ(oracle.lies, 0);
}

// --- the host is kept from its work ------------------------------------------------------

class cBothDialects : public testing::TestWithParam<eSimDialect> {
 protected:
  cSimSensor sensor{paced(GetParam())};
  cFaultOracle oracle{sensor};
};

std::string nameOf(const testing::TestParamInfo<eSimDialect>& dialect) {
  return dialect.param == eSimDialect::SCIP2 ? "Scip2" : "Scip1";
}

void doNothing(int) {}

// Would catch: a call that EINTR ends or fails, a wait that begins anew with each signal.
TEST_P(cBothDialects, BearAStormOfSignals) {
  struct sigaction action = {};
  action.sa_handler = doNothing;  // without SA_RESTART
  sigaction(SIGALRM, &action, nullptr);
  const itimerval storm = {{0, 1000}, {0, 1000}};
  setitimer(ITIMER_REAL, &storm, nullptr);
  const tDriver driver = cSensorDriverManager::create(sensor.getPath());
  ASSERT_TRUE(driver);
  iSCIP2IF& face = *driver->getSCIP2IF();
  EXPECT_GE(startScan(face), 0);
  for (int scan = 0; scan < 20; ++scan) oracle.expectTrueScan(face);
  EXPECT_GE(oracle.truths, 20);
  sensor.setFault(eSimFault::STALL);
  oracle.during("a wait for scans", 2 * 400, [&] {
    while (face.waitScan(400))
      while (face.getScanNum() > 0) oracle.judge(distancesOf(face.getScanFirst()));
  });
  const itimerval calm = {};
  setitimer(ITIMER_REAL, &calm, nullptr);
  EXPECT_EQ(oracle.told + oracle.lies, 0);
}

// Would catch: a wait that ends an hour late, or at once, or a period that is made up for.
TEST_P(cBothDialects, BearAWallClockThatIsSet) {
  const tDriver driver = cSensorDriverManager::create(sensor.getPath());
  ASSERT_TRUE(driver);
  iSCIP2IF& face = *driver->getSCIP2IF();
  EXPECT_GE(face.startScan(FIRST, LAST, 1, 2, 0, FAR), 0);
  oracle.expectTrueScan(face);
  for (const long step : {3600L, -7200L, 3600L}) {
    const std::size_t asked = sensor.getCommands().size();
    shim::stepWallClock(step);
    for (int scan = 0; scan < 3; ++scan) oracle.expectTrueScan(face);
    EXPECT_LE(sensor.getCommands().size(), asked + 4);
  }
  sensor.setFault(eSimFault::STALL);
  for (const long step : {3600L, -3600L}) {
    std::thread setter([step] { shim::stepWallClock(step); });
    const auto begin = std::chrono::steady_clock::now();
    oracle.during("a wait for scans", 2 * 400, [&] {
      while (face.waitScan(400)) face.getScanFirst();
    });
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(400));
    setter.join();
  }
  EXPECT_EQ(oracle.told + oracle.lies, 0);
}

INSTANTIATE_TEST_SUITE_P(Dialects, cBothDialects,
                         testing::Values(eSimDialect::SCIP2, eSimDialect::SCIP1), nameOf);

/// A host in a process of its own, that tells the scans it takes through a pipe.
class cHost {
 public:
  /// Forks: do it before there is a thread.
  cHost() {
    EXPECT_EQ(pipe(paths), 0);
    EXPECT_EQ(pipe(scans), 0);
    child = fork();
    if (child == 0) run();
  }
  ~cHost() {
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    for (const int end : {paths[0], paths[1], scans[0], scans[1]}) close(end);
  }
  void begin(const std::string& path) const {
    EXPECT_EQ(write(paths[1], path.c_str(), path.size()), static_cast<ssize_t>(path.size()));
  }
  void signal(int number) const { kill(child, number); }
  std::vector<int> readScan() const {
    std::vector<int> distances(POINTS);
    const std::size_t size = distances.size() * sizeof(int);
    EXPECT_EQ(read(scans[0], distances.data(), size), static_cast<ssize_t>(size));
    return distances;
  }

 private:
  [[noreturn]] void run() const {
    char path[128] = {};
    if (read(paths[0], path, sizeof path - 1) <= 0) _exit(1);
    const tDriver2 driver = openReady(path);
    startScan(*driver);
    for (;;) {
      std::vector<int> distances = distancesOf(takeScan(*driver));
      distances.resize(POINTS);
      if (write(scans[1], distances.data(), POINTS * sizeof(int)) < 0) _exit(1);
    }
  }

  int paths[2];
  int scans[2];
  pid_t child;
};

// Would catch: a host that, once it goes on, takes halves of two records for one scan.
TEST(cStoppedHost, GoesOn) {
  cHost host;
  cSimSensor sensor(paced());
  cFaultOracle oracle(sensor);
  host.begin(sensor.getPath());
  EXPECT_TRUE(oracle.judge(host.readScan()));
  host.signal(SIGSTOP);
  // Two seconds of scans that nobody reads: most of them find no room.
  EXPECT_TRUE(sensor.waitFor(&cSimCounters::skippedScans, 80, LONG_TIME));
  host.signal(SIGCONT);
  const std::size_t scans = sensor.getSentScans().size() + 20;
  while (sensor.getSentScans().size() < scans) oracle.judge(host.readScan());
  EXPECT_GE(oracle.truths, 20);
  EXPECT_EQ(oracle.lies, 0);
}

}  // namespace
