#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include "tests/driver/support.h"

namespace {

// --- a driver is destroyed, whatever it is in the middle of ------------------------------

struct cState {
  const char* name;
  void (*enter)(cSimSensor& sensor, cSensorDriverSCIP2& driver);
};

std::ostream& operator<<(std::ostream& out, const cState& of) { return out << of.name; }

void scanEndlessly(cSimSensor&, cSensorDriverSCIP2& driver) {
  ASSERT_EQ(driver.startScan(44, 725, 1, 0, 0, 5600), 0);
  ASSERT_TRUE(driver.waitScan(LONG));
}

void babble(cSimSensor& sensor, cSensorDriverSCIP2& driver) {
  scanEndlessly(sensor, driver);
  const std::uint64_t before = sensor.getCounters().records;
  sensor.setFault(eSimFault::ENDLESS_LINE);
  ASSERT_TRUE(sensor.waitFor(&cSimCounters::records, before + 3, LONG_TIME));
}

void unplug(cSimSensor& sensor, cSensorDriverSCIP2& driver) {
  scanEndlessly(sensor, driver);
  sensor.unplug();
}

void leaveUnanswered(cSimSensor& sensor, cSensorDriverSCIP2& driver) {
  sensor.setFault(eSimFault::NO_ANSWER);
  EXPECT_EQ(driver.startScan(44, 725, 1, 0, 1, 5600), -1);
}

const cState STATES[] = {
    {"Idle", [](cSimSensor&, cSensorDriverSCIP2&) {}},
    {"EndlessScan", scanEndlessly},
    {"BabblingLine", babble},
    {"Unplugged", unplug},
    {"Unanswered", leaveUnanswered},
};

class cStopping : public testing::TestWithParam<cState> {};

// Would catch: a destructor that waits for ever, a thread or a descriptor left behind.
TEST_P(cStopping, LeavesNothingBehind) {
  cSimSensor sensor(quick());
  const int threads = countThreads();
  const int open = countOpen(sensor.getPath());
  tDriver2 driver = openReady(sensor.getPath());
  GetParam().enter(sensor, *driver);

  driver.reset();

  EXPECT_LE(countOpen(sensor.getPath()), open);
  EXPECT_TRUE(eventually([&] { return countThreads() <= threads; }));
}

INSTANTIATE_TEST_SUITE_P(States, cStopping, testing::ValuesIn(STATES));

TEST(cDriver, IsDestroyedThoughItNeverRan) {
  cSimSensor sensor{cSimSetting()};
  cSensorDriverSCIP2(openLink(sensor.getPath()));
  EXPECT_EQ(countOpen(sensor.getPath()), 1);
}

// --- the cable ---------------------------------------------------------------------------

double processSeconds() {
  timespec used = {};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
  return static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) / 1e9;
}

// Would catch: a worker that spins on a hung-up port, a device that cannot be opened again.
TEST(cDriver, OutlivesThePulledCableAndTheNextOneScans) {
  cSimSensor sensor(quick());
  tDriver2 driver = openReady(sensor.getPath());
  scanEndlessly(sensor, *driver);
  sensor.unplug();
  while (driver->waitScan(400)) driver->getScanFirst();
  const double before = processSeconds();
  EXPECT_FALSE(driver->waitScan(1000)) << "what came before is taken";
  EXPECT_LT(processSeconds() - before, 0.1);
  EXPECT_NE(outputOf([&] { EXPECT_EQ(driver->stopAll(), -1); }).err, "");

  sensor.plug();
  const tDriver2 next = openReady(sensor.getPath());
  scanEndlessly(sensor, *next);
  EXPECT_EQ(next->abortScan(), 0);
}

// --- more than one -----------------------------------------------------------------------

TEST(cDriver, TwoSensorsInOneProcessKeepTheirScansApart) {
  cSimSensor one(quick(eSimModel::SHORT_RANGE));
  cSimSensor other(quick(eSimModel::LONG_RANGE));
  const tDriver2 first = openReady(one.getPath());
  const tDriver2 second = openReady(other.getPath());
  ASSERT_EQ(first->startScan(44, 725, 1, 0, 50, 5600), 0);
  ASSERT_EQ(second->startScan(0, 1080, 1, 0, 50, 60000), 0);
  for (std::size_t i = 0; i < 50; ++i) {
    const std::vector<int> ofFirst = distancesOf(takeScan(*first));
    const std::vector<int> ofSecond = distancesOf(takeScan(*second));
    ASSERT_EQ(ofFirst, truth(one, i, 44, 725));
    ASSERT_EQ(ofSecond, truth(other, i, 0, 1080));
  }
}

/// A host program in a process of its own: scans what it is told to until it is killed.
class cOtherHost {
 public:
  /// Forks; do it before there is a thread in this process.
  cOtherHost() {
    if (pipe(ends) != 0) throw std::runtime_error("no pipe for the other host");
    child = fork();
    if (child == 0) run();
  }
  ~cOtherHost() {
    kill();
    close(ends[0]);
    close(ends[1]);
  }
  void scan(const std::string& path) {
    EXPECT_EQ(write(ends[1], path.c_str(), path.size()), static_cast<ssize_t>(path.size()));
  }
  void kill() {
    if (child <= 0) return;
    ::kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    child = 0;
  }

 private:
  [[noreturn]] void run() {
    char path[128] = {};
    if (read(ends[0], path, sizeof path - 1) <= 0) _exit(1);
    const tDriver driver = cSensorDriverManager::create(std::string(path));
    if (!driver) _exit(1);
    driver->getSCIP2IF()->startScan(44, 725, 1, 0, 0, 5600);
    for (;;) takeScan(*driver->getSCIP2IF());
  }

  int ends[2] = {-1, -1};
  pid_t child = 0;
};

// Would catch: records of a dead program taken for one's own, a stream that nobody can stop.
TEST(cDriver, TakesOverFromAProgramKilledInTheMiddleOfAStream) {
  cOtherHost killed;
  cSimSensor sensor(quick());
  killed.scan(sensor.getPath());
  ASSERT_TRUE(sensor.waitForSentScans(20, LONG_TIME));
  killed.kill();
  ASSERT_TRUE(sensor.isScanning());

  const tDriver driver = cSensorDriverManager::create(sensor.getPath());
  ASSERT_TRUE(driver);
  iSCIP2IF& face = *driver->getSCIP2IF();
  ASSERT_TRUE(stopLeftScan(face));
  EXPECT_FALSE(sensor.isScanning());
  const std::size_t sent = sensor.getSentScans().size();
  ASSERT_EQ(face.startScan(44, 725, 1, 0, 3, 5600), 0);
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(distancesOf(takeScan(face)), truth(sensor, sent + i, 44, 725));
  }
}

}  // namespace
