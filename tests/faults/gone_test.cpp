// The cable is pulled, at whatever the library is at; and the device comes back.

#include <gtest/gtest.h>

#include "tests/faults/cFaultOracle.h"
#include "tests/support/cCaseName.h"
#include "tests/tools/cTempFolder.h"

namespace {

struct cRow {
  const char* name;
  std::function<void(cSimSensor&, iSCIP2IF&, cFaultOracle&)> pull;
};

std::ostream& operator<<(std::ostream& out, const cRow& row) { return out << row.name; }

/// Pulls the cable when the command has been heard, whose answer never comes.
void pullDuring(cSimSensor& sensor, const char* command, const std::function<void()>& call) {
  sensor.setFault(eSimFault::NO_ANSWER);
  std::thread puller([&] {
    EXPECT_TRUE(sensor.waitForCommand(command, LONG_TIME));
    sensor.unplug();
  });
  call();
  puller.join();
}

/// Pulls it after the first half of a record that begins so.
void pullInMidLine(cSimSensor& sensor, const char* record) {
  sensor.setFault(eSimFault::CUT_SHORT, 101, record);
  const std::uint64_t before = sensor.getCounters().records;
  EXPECT_TRUE(sensor.waitFor(&cSimCounters::records, before + 2, LONG_TIME));
  sensor.unplug();
}

// --- SCIP 2.0 ----------------------------------------------------------------------------

void scanTruly(iSCIP2IF& driver, cFaultOracle& oracle, int count = 0) {
  startScan(driver, count);
  oracle.expectTrueScan(driver);
}

const cRow SCIP2_ROWS[] = {
    // Would catch: a command on a dead port that waits for ever, a worker that spins meanwhile.
    {"Idle", [](cSimSensor& sensor, iSCIP2IF&, cFaultOracle&) { sensor.unplug(); }},
    // Would catch: a wait that the end of the port ends too early, or not at all.
    {"CommandWaiting",
     [](cSimSensor& sensor, iSCIP2IF& driver, cFaultOracle& oracle) {
       pullDuring(sensor, "II", [&] {
         oracle.during("the waiting command", READ + ANSWER,
                       [&] { EXPECT_EQ(driver.updateStatus(), -1); });
       });
     }},
    // Would catch: half a record that becomes a scan.
    {"MidLine",
     [](cSimSensor& sensor, iSCIP2IF& driver, cFaultOracle& oracle) {
       scanTruly(driver, oracle);
       pullInMidLine(sensor, "MD");
     }},
    // Would catch: a worker that spins where records are still expected.
    {"ContinuousScan",
     [](cSimSensor& sensor, iSCIP2IF& driver, cFaultOracle& oracle) {
       scanTruly(driver, oracle);
       sensor.unplug();
     }},
};

class cGone2 : public testing::TestWithParam<cRow> {};

TEST_P(cGone2, IsBorne) {
  cSimSensor sensor(paced());
  cFaultOracle oracle(sensor);
  tDriver2 driver = openReady(sensor.getPath());
  GetParam().pull(sensor, *driver, oracle);
  const auto scans = driver->isScanning();
  if (scans) {
    while (driver->getScanNum() > 0) oracle.judge(distancesOf(driver->getScanFirst()));
    oracle.during("a wait for scans", 1000, [&] { EXPECT_FALSE(driver->waitScan(1000)); });
  }
  oracle.during("a command", ANSWER, [&] { EXPECT_EQ(driver->fetchVersionStr(), -1); });
  oracle.during("the end", READ, [&] { driver.reset(); });
  EXPECT_EQ(oracle.lies, 0);
}

INSTANTIATE_TEST_SUITE_P(Scip2, cGone2, testing::ValuesIn(SCIP2_ROWS), cCaseName());

// --- SCIP 1.x ----------------------------------------------------------------------------

void awaitIdle(iSCIP2IF& adapter) {
  EXPECT_TRUE(eventually([&] { return !adapter.isScanning(); }));
}

const cRow SCIP1_ROWS[] = {
    {"Idle", [](cSimSensor& sensor, iSCIP2IF&, cFaultOracle&) { sensor.unplug(); }},
    {"CommandWaiting",
     [](cSimSensor& sensor, iSCIP2IF& adapter, cFaultOracle& oracle) {
       pullDuring(sensor, "V", [&] {
         oracle.during("the waiting command", READ,
                       [&] { EXPECT_EQ(adapter.fetchVersionStr(), -1); });
       });
     }},
    // Would catch: an adapter that hangs in half an answer. That it may be decoded is known.
    {"MidLine",
     [](cSimSensor& sensor, iSCIP2IF& adapter, cFaultOracle& oracle) {
       scanTruly(adapter, oracle, 1000000);
       pullInMidLine(sensor, "G");
     }},
    // Would catch: an adapter that goes on asking a dead port without a pause between.
    {"PeriodZero",
     [](cSimSensor& sensor, iSCIP2IF& adapter, cFaultOracle& oracle) {
       scanTruly(adapter, oracle);
       sensor.unplug();
       awaitIdle(adapter);
     }},
    {"PeriodZeroCounted",
     [](cSimSensor& sensor, iSCIP2IF& adapter, cFaultOracle& oracle) {
       scanTruly(adapter, oracle, 1000000);
       sensor.unplug();
       while (adapter.getScanNum() > 0) oracle.judge(distancesOf(adapter.getScanFirst()));
     }},
};

void pullScip1(const cRow& row) {
  cSimSensor sensor(paced(eSimDialect::SCIP1));
  cFaultOracle oracle(sensor);
  tDriver1 driver = openDriver1(sensor.getPath());
  iSCIP2IF& adapter = *driver->getSCIP2IF();
  row.pull(sensor, adapter, oracle);
  oracle.during("a while", 1100, [&] {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(1);
    while (std::chrono::steady_clock::now() < end) adapter.waitScan(100);
  });
  adapter.stopAll();
  oracle.during("a command", READ, [&] { EXPECT_EQ(adapter.fetchVersionStr(), -1); });
  oracle.during("the end", READ, [&] { driver.reset(); });
  EXPECT_EQ(oracle.lies, 0);
}

class cGone1 : public testing::TestWithParam<cRow> {};

TEST_P(cGone1, IsBorne) { EXPECT_CLEAN_OR_DELIBERATE(pullScip1(GetParam())); }

INSTANTIATE_TEST_SUITE_P(Scip1, cGone1, testing::ValuesIn(SCIP1_ROWS), cCaseName());

// --- again and again ---------------------------------------------------------------------

/// One life of a driver, with a true scan in it and the cable pulled under it; half an answer of
/// SCIP 1.x would end the process, and is another test's.
template <class tOpen>
void liveOnce(cSimSensor& sensor, cFaultOracle& oracle, tOpen open) {
  const auto driver = open(sensor.getPath());
  iSCIP2IF& face = *driver->getSCIP2IF();
  scanTruly(face, oracle, 1);
  if (sensor.getSetting().dialect == eSimDialect::SCIP1) awaitIdle(face);
  sensor.unplug();
}

// Would catch: a descriptor, a thread or memory that each life leaves behind.
TEST(cGone, HundredLives) {
  for (const eSimDialect dialect : {eSimDialect::SCIP2, eSimDialect::SCIP1}) {
    cSimSensor sensor(paced(dialect, 500));
    cFaultOracle oracle(sensor);
    for (int life = 0; life < 100; ++life) {
      sensor.plug();
      if (dialect == eSimDialect::SCIP2) {
        liveOnce(sensor, oracle, openReady);
      } else {
        liveOnce(sensor, oracle, openDriver1);
      }
    }
    EXPECT_GE(oracle.truths, 100);
    EXPECT_EQ(oracle.lies, 0);
  }
}

// Would catch: a driver gone whose port keeps the device's name taken, a next one that finds what
// the last one left.
TEST(cGone, ComesBack) {
  const cTempFolder folder;
  cSimSetting setting = paced();
  setting.link = folder / "sensor";
  cSimSensor sensor(setting);
  cFaultOracle oracle(sensor);
  const std::string path = sensor.getPath();
  for (const std::string& name : {path, path, setting.link, setting.link}) {
    liveOnce(sensor, oracle, [&](const std::string&) { return openReady(name); });
    // Another program may have taken the terminal's name meanwhile.
    EXPECT_TRUE(eventually([&] {
      sensor.unplug();
      sensor.plug();
      return sensor.getPath() == path;
    }));
  }
  EXPECT_EQ(oracle.lies, 0);
}

}  // namespace
