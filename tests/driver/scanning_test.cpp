// Scans: started, taken, stopped; and what becomes one.
#include <atomic>

#include "tests/support/cScriptedSensor.h"

namespace {

// Catches: a wrong decoding, order, angle, count or time on any model, in either form.
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
    const cSimSensor sensor(turning(200, eSimDialect::SCIP2, kind));
    const tDriver2 driver = openReady(sensor.getPath());
    for (const int cluster : {0, 1, 3, 99}) {
      const std::size_t sent = startRetrying(sensor, *driver, first, last, cluster, 2, longest);
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

class Scanning : public testing::Test {
 protected:
  /// `count` readings a scan, `scans` times (0: without end), in three characters; how many scans
  /// were sent before.
  std::size_t start(int count, int scans) {
    return startRetrying(sensor, *driver, 100, 100 + count - 1, 1, scans, 5600);
  }
  std::vector<int> measured(std::size_t index, int count) {
    return truth(sensor, index, 100, 100 + count - 1);
  }

  cSimSensor sensor{turning(200)};
  tDriver2 driver = openReady(sensor.getPath());
};

// Catches: scans lost with the abort, taken from the wrong end, or mixed into those of the next
// start; a running scan lost to a refused start, a sensor that scans on.
TEST_F(Scanning, KeepsUnreadScansOverAnAbortAndStartsAgain) {
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

// Catches: a wait that takes more than its one scan, or sleeps beside those that came.
TEST_F(Scanning, ConvertsOneScanAWaitOrDiscardsIt) {
  const std::size_t sent = start(9, 3);
  EXPECT_EQ(driver->waitScan(), 1);
  EXPECT_TRUE(driver->waitScan(LONG));
  EXPECT_TRUE(driver->waitScan(LONG));
  EXPECT_TRUE(driver->waitScan(0)) << "two scans wait";
  EXPECT_EQ(distancesOf(driver->getScanFirst()), measured(sent + 1, 9));
  EXPECT_EQ(distancesOf(driver->getScanFirst()), measured(sent + 2, 9));
  EXPECT_FALSE(driver->waitScan(1));
}

// Catches: a host left running on a null pointer, in a build without assertions too.
TEST_F(Scanning, StopsAProcessThatWaitsForNoScan) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(driver->waitScan(1), "px != 0");
  EXPECT_DEATH(driver->waitScan(), "px != 0");
}

// Catches: the other form asked for, angles that are not the range's, a refusal that makes a
// scan, a last line of one character taken: a sum over one is no line.
TEST_F(Scanning, TakesAStoredScanWhileTheLaserIsOn) {
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

// Catches: a race between what the worker writes and what callers read, answers that are mixed up
// between threads, scans lost or doubled where two threads take them, a stored scan given to the
// running one's listener.
TEST_F(Scanning, ServesManyCallersAtOnce) {
  constexpr int SCANS = 99;
  start(600, SCANS);
  std::atomic<int> taken{0};
  const auto take = [&] {
    while (taken < SCANS + 2) {
      driver->waitScan(100);
      if (driver->getScanFirst()) ++taken;
    }
  };
  const auto ask = [&](const std::string& command) {
    EXPECT_EQ(driver->getStoredScan(44, 93, 1, 5600), 0);
    for (int i = 0; i < 30; ++i) {
      EXPECT_EQ(driver->doRaw2(command, 1)->echo.substr(0, 2), command);
      EXPECT_EQ(driver->fetchVersionStr() | driver->fetchParameters() | driver->updateStatus(), 0);
      driver->startScan(44, 9999, 1, 0, 0, 5600);  // refused, but it needs the parameters
      driver->getResponseBody();
      driver->getScanNum();
    }
  };
  boost::thread_group others;
  for (int i = 0; i < 2; ++i) others.create_thread(take);
  others.create_thread([&] { ask("VV"); });
  ask("PP");
  others.join_all();
  EXPECT_EQ(taken, SCANS + 2);
  EXPECT_EQ(driver->getStatus(), "Sensor works well.");
}

// Catches: arguments in another's place, a buffer overrun by those that no sensor takes.
TEST(Start, SendsItsArguments) {
  using tArguments = std::array<int, 6>;
  for (const auto& [given, line] : std::vector<std::pair<tArguments, std::string>>{
           {{0, 768, 1, 0, 0, 4095}, "MS0000076801000;1"},
           {{0, 768, 1, 0, 0, 4096}, "MD0000076801000;1"},
           {{1, 2, 3, 4, 56, 4095}, "MS0001000203456;1"},
           {{1, 2, 3, 4, 56, 4096}, "MD0001000203456;1"},
           {{INT_MAX, -2, -3, -4, INT_MAX, -6}, "MS2147483647-002-3-42147483647;1"},
           {{INT_MIN, INT_MIN, INT_MIN, INT_MIN, INT_MIN, INT_MIN},
            "MS-2147483648-2147483648-2147483648-2147483648-2147483648;1"}}) {
    const cScriptedSensor sensor([](const std::string& command) { return answer(command); });
    std::apply([&](auto... each) { openDriver(sensor.getPath())->startScan(each...); }, given);
    EXPECT_EQ(sensor.waitLines(1), tLines{line});
  }
}

// Catches: a scan that goes on, or is lost with the rest, because one of its records throws.
TEST(Record, DamagedOneCostsNoOther) {
  using tAsk = void (*)(cSensorDriverSCIP2&);
  const tAsk abort = [](cSensorDriverSCIP2& one) { one.abortScan(); };
  for (const tAsk ask : {abort, tAsk([](cSensorDriverSCIP2& one) { one.waitScan(LONG); }),
                         tAsk([](cSensorDriverSCIP2& one) { one.getScanNum(); }),
                         tAsk([](cSensorDriverSCIP2& one) { one.getScanFirst(); }),
                         tAsk([](cSensorDriverSCIP2& one) { one.getScanLast(); })}) {
    const cScriptedSensor sensor([](const std::string& line) {
      if (line[0] != 'M') return answer(line);
      return answer(line) + scanOf(line, "CB") + answer(line, "99", summed("001") + "\n") +
             scanOf(line, "CB");
    });
    const tDriver2 driver = openDriver(sensor.getPath());
    ASSERT_EQ(retryIfStarved(*driver, [&] { return driver->startScan(0, 0, 1, 0, 0, 4095); }), 0);
    ASSERT_EQ(driver->stopAll(), 0) << "whose answer comes behind all records";
    const auto askTwice = [&] {
      ask(*driver);
      ask(*driver);
    };
    EXPECT_THROW(askTwice(), std::out_of_range);
    EXPECT_EQ(driver->isScanning(), ask != abort);
    EXPECT_EQ(driver->getScanNum(), 2);
  }
}

// Catches: a damaged record made a scan, or an empty line taken for a wrong sum.
TEST(Record, IsMadeAScanByItsShape) {
  constexpr int THROWN = -1;
  const cScriptedSensor sensor(keepSilent);
  const tDriver2 driver = openDriver(sensor.getPath());
  const std::string time = summed("0001") + "\n";
  const std::string data = summed("CB") + "\n";
  for (const auto& [body, result, scans] :
       std::vector<std::tuple<std::string, int, int>>{{"", true, 0},
                                                      {time, true, 0},
                                                      {time + data, true, 1},
                                                      {time + data + data, true, 1},
                                                      {"00010\n" + data, false, 0},
                                                      {time + data + "CB0\n", false, 0},
                                                      {"\n", THROWN, 0},
                                                      {time + "\n", THROWN, 0},
                                                      {time + data + "\n" + data, THROWN, 0},
                                                      {summed("001") + "\n" + data, THROWN, 0}}) {
    const boost::shared_ptr<cSCIPRecord> record(new cSCIPRecord);
    record->body = body;
    int outcome = THROWN;
    try {
      outcome = driver->pushScanRecord(record);
    } catch (const std::out_of_range&) {
    }
    EXPECT_EQ(outcome, result) << body;
    EXPECT_EQ(driver->getScanNum(), scans) << body;
    driver->getScanFirst();
  }
}

}  // namespace
