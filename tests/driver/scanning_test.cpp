#include <gtest/gtest.h>

#include <atomic>
#include <climits>

#include "tests/driver/cScriptedDriver.h"

// Would catch: a wrong decoding, order, angle, count or time on any model, in either form.
TEST(Scan, IsWhatTheSensorMeasured) {
  constexpr double FULL_TURN = 6.283185307179586;
  struct cModel {
    eSimModel kind;
    int first, last, front, perTurn;
    int longest;  // millimetres: of MS, or beyond it
  };
  for (const auto& [kind, first, last, front, perTurn, longest] :
       {cModel{eSimModel::SHORT_RANGE, 44, 725, 384, 1024, 4095},
        cModel{eSimModel::MIDDLE_RANGE, 0, 768, 384, 1024, 4096},
        cModel{eSimModel::LONG_RANGE, 0, 1080, 540, 1440, 4095},
        cModel{eSimModel::LONG_RANGE, 0, 1080, 540, 1440, 60000}}) {
    const cSimSensor sensor(quick(kind));
    const tDriver2 driver = openReady(sensor.getPath());
    for (const int cluster : {0, 1, 3, 99}) {
      const std::size_t sent = startSurely(sensor, *driver, first, last, cluster, 2, longest);
      for (std::size_t i = 0; i < 2; ++i) {
        const tScan scan = takeScan(*driver);
        ASSERT_TRUE(scan);
        EXPECT_EQ(distancesOf(scan),
                  truth(sensor, sent + i, first, last, cluster, longest > 4095 ? INT_MAX : 4095));
        const auto age = boost::posix_time::microsec_clock::local_time() - scan->timeStamp.time;
        EXPECT_LT(std::abs(age.total_seconds()), 10);
        EXPECT_DOUBLE_EQ(scan->angleStep, cluster * FULL_TURN / perTurn);
        EXPECT_DOUBLE_EQ(scan->firstAngle, (first - front) * FULL_TURN / perTurn);
        EXPECT_DOUBLE_EQ(scan->lastAngle, (last - front) * FULL_TURN / perTurn);
        EXPECT_DOUBLE_EQ(
            scan->points.back().angle,
            scan->firstAngle + scan->angleStep * static_cast<double>(scan->points.size() - 1));
      }
      EXPECT_EQ(driver->abortScan(), 0);
    }
  }
}

namespace {

class cScanning : public testing::Test {
 protected:
  /// `count` readings a scan, `scans` times (0: without end), in three characters; how many scans
  /// were sent before.
  std::size_t start(int count, int scans) {
    return startSurely(sensor, *driver, 100, 100 + count - 1, 1, scans, 5600);
  }
  std::vector<int> measured(std::size_t index, int count) {
    return truth(sensor, index, 100, 100 + count - 1);
  }

  cSimSensor sensor{quick()};
  tDriver2 driver = openReady(sensor.getPath());
};

}  // namespace

// Would catch: scans lost with the abort, taken from the wrong end, or mixed into those of the next
// start; a running scan lost to a refused start, a sensor that scans on.
TEST_F(cScanning, KeepsUnreadScansOverAnAbortAndStartsAgain) {
  const std::size_t sent = start(9, 5);
  ASSERT_TRUE(sensor.waitForSentScans(sent + 5, LONG_TIME));
  EXPECT_TRUE(driver->isScanning()) << "until it is aborted";
  EXPECT_EQ(driver->abortScan(), 0);
  EXPECT_EQ(driver->abortScan(), -1);
  EXPECT_EQ(outputOf([&] { EXPECT_EQ(driver->getScanNum(), 5); }).err,
            "tryRecordToScan :: no listener ready.\n");
  EXPECT_EQ(distancesOf(driver->getScanFirst()), measured(sent, 9));
  EXPECT_EQ(distancesOf(driver->getScanLast()), measured(sent + 4, 9));
  EXPECT_FALSE(driver->getScanLast(0));
  while (driver->getScanFirst()) {
  }
  ASSERT_TRUE(sensor.waitForSentScans(start(9, 0) + 3, LONG_TIME));
  start(30, 0);
  for (int i = 0; i < 5; ++i) EXPECT_EQ(distancesOf(takeScan(*driver)).size(), 30u);
  EXPECT_EQ(driver->startScan(100, 9999, 1, 0, 0, 5600), -1) << "there are no such steps";
  EXPECT_TRUE(driver->isScanning());
  EXPECT_EQ(distancesOf(takeScan(*driver)).size(), 30u);
  EXPECT_EQ(driver->abortScan(), 0);
  EXPECT_FALSE(sensor.isScanning());
}

// Would catch: a wait that takes more than its one scan, or sleeps beside those that came.
TEST_F(cScanning, WaitsConvertOneScanOrDiscardIt) {
  const std::size_t sent = start(9, 3);
  EXPECT_EQ(driver->waitScan(), 1);
  EXPECT_TRUE(driver->waitScan(LONG));
  EXPECT_TRUE(driver->waitScan(LONG));
  EXPECT_TRUE(driver->waitScan(0)) << "two scans wait";
  EXPECT_EQ(distancesOf(driver->getScanFirst()), measured(sent + 1, 9));
  EXPECT_EQ(distancesOf(driver->getScanFirst()), measured(sent + 2, 9));
  EXPECT_FALSE(driver->waitScan(1));
}

// Would catch: a host left running on a null pointer, in a build without assertions too.
TEST_F(cScanning, WaitingWithoutARunningScanStopsTheProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(driver->waitScan(1), "px != 0");
  EXPECT_DEATH(driver->waitScan(), "px != 0");
}

// Would catch: the other form asked for, angles that are not the range's, a refusal that makes a
// scan, a last line of one character taken: a sum over one is no line.
TEST_F(cScanning, StoredScanIsTakenWhileTheLaserIsOn) {
  EXPECT_EQ(driver->getStoredScan(44, 725, 1, 5600), -1) << "laser off";
  ASSERT_EQ(driver->startStoringScan(), 0);
  EXPECT_EQ(outputOf([&] { EXPECT_EQ(driver->doScan(44, 725, 2), 0); }).err,
            "Scan points parameter step:0.00613592 skip:0.0122718 start:-2.08621 end:2.09235\n");
  EXPECT_EQ(driver->getStoredScan(384, 385, 1, 4096), 0);
  EXPECT_EQ(driver->getStoredScan(100, 142, 1, 5600), -1);
  EXPECT_EQ(sensor.getCommands(),
            (std::vector<std::string>{"PP;1", "GD0044072501;2", "BM;3", "GS0044072502;4",
                                      "GD0384038501;5", "GD0100014201;6"}));
  EXPECT_EQ(distancesOf(driver->getScanFirst()), truth(sensor, 0, 44, 725, 2, 4095));
  EXPECT_EQ(distancesOf(driver->getScanFirst()), truth(sensor, 1, 384, 385));
  EXPECT_FALSE(driver->getScanFirst());
}

// Would catch: a race between what the worker writes and what callers read, scans lost or
// doubled where two threads take them, a stored scan given to the running one's listener.
TEST_F(cScanning, ManyCallersTakeAndAskAtOnce) {
  constexpr int SCANS = 99;
  start(600, SCANS);
  std::atomic<int> taken{0};
  const auto take = [&] {
    while (taken < SCANS + 2) {
      driver->waitScan(100);
      if (driver->getScanFirst()) ++taken;
    }
  };
  const auto ask = [&] {
    EXPECT_EQ(driver->getStoredScan(44, 93, 1, 5600), 0);
    for (int i = 0; i < 30; ++i) {
      EXPECT_EQ(driver->fetchVersionStr() | driver->fetchParameters() | driver->updateStatus(), 0);
      driver->startScan(44, 9999, 1, 0, 0, 5600);  // refused, but it needs the parameters
      driver->getResponseBody();
      driver->getScanNum();
    }
  };
  boost::thread_group others;
  others.create_thread(take);
  others.create_thread(take);
  others.create_thread(ask);
  ask();
  others.join_all();
  EXPECT_EQ(taken, SCANS + 2);
  EXPECT_EQ(driver->getStatus(), "Sensor works well.");
}

// Would catch: a buffer overrun or an overflow by arguments that no sensor takes.
TEST(Start, LineHoldsTheArguments) {
  using tArguments = std::array<int, 6>;
  for (const auto& [given, line] : std::vector<std::pair<tArguments, std::string>>{
           {{0, 768, 1, 0, 0, 4095}, "MS0000076801000;1"},
           {{0, 768, 1, 0, 0, 4096}, "MD0000076801000;1"},
           {{INT_MAX, -2, -3, -4, INT_MAX, -6}, "MS2147483647-002-3-42147483647;1"},
           {{INT_MIN, INT_MIN, INT_MIN, INT_MIN, INT_MIN, INT_MIN},
            "MS-2147483648-2147483648-2147483648-2147483648-2147483648;1"}}) {
    cScriptedDriver driver([](const std::string& heard) { return cScriptedPeer::respond(heard); });
    std::apply([&](auto... each) { driver->startScan(each...); }, given);
    EXPECT_EQ(driver.peer.waitLines(1), std::vector<std::string>{line});
  }
}

// Would catch: a record without data, or with a trouble status, made a scan or ending the scan.
TEST(Start, EmptyRecordMakesNoScan) {
  cScriptedDriver driver([](const std::string& line) {
    const auto respond = cScriptedPeer::respond;
    if (line[0] != 'M') return respond(line, "00", "");
    const std::string time = summed("0001") + "\n";
    return respond(line, "00", "") + respond(line, "50", "") + respond(line, "99", time) +
           respond(line, "99", time + summed("CB1D") + "\n");
  });
  ASSERT_EQ(surely(*driver.driver, [&] { return driver->startScan(0, 1, 1, 0, 0, 4095); }), 0);
  EXPECT_FALSE(driver->waitScan(LONG)) << "one came: no body";
  EXPECT_FALSE(driver->waitScan(LONG)) << "one came: a time without data";
  EXPECT_TRUE(driver->waitScan(LONG));
  EXPECT_EQ(distancesOf(driver->getScanFirst()), (std::vector<int>{1234, 84}));
}
