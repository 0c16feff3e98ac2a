#include <gtest/gtest.h>

#include <climits>

#include "tests/driver/cScriptedDriver.h"

namespace {

constexpr double FULL_TURN = 6.283185307179586;

struct cModelCase {
  eSimModel model;
  int first, last, front, perTurn;
  int longest;  // millimetres: of MS, or beyond it
};

class cModel : public testing::TestWithParam<cModelCase> {};

}  // namespace

// Would catch: a wrong decoding, order, angle or count on any model, in either form.
TEST_P(cModel, GivesWhatTheSensorMeasured) {
  const auto [kind, first, last, front, perTurn, longest] = GetParam();
  const cSimSensor sensor(quick(kind));
  const tDriver2 driver = openReady(sensor.getPath());
  for (const int cluster : {0, 1, 3, 99}) {
    const std::size_t sent = startSurely(sensor, *driver, first, last, cluster, 2, longest);
    for (std::size_t i = 0; i < 2; ++i) {
      const tScan scan = takeScan(*driver);
      ASSERT_TRUE(scan);
      EXPECT_EQ(distancesOf(scan),
                truth(sensor, sent + i, first, last, cluster, longest > 4095 ? INT_MAX : 4095));
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

INSTANTIATE_TEST_SUITE_P(
    Models, cModel,
    testing::Values(cModelCase{eSimModel::SHORT_RANGE, 44, 725, 384, 1024, 4095},
                    cModelCase{eSimModel::SHORT_RANGE, 44, 725, 384, 1024, 4096},
                    cModelCase{eSimModel::MIDDLE_RANGE, 0, 768, 384, 1024, 4095},
                    cModelCase{eSimModel::MIDDLE_RANGE, 0, 768, 384, 1024, 8000},
                    cModelCase{eSimModel::LONG_RANGE, 0, 1080, 540, 1440, 4095},
                    cModelCase{eSimModel::LONG_RANGE, 0, 1080, 540, 1440, 60000}));

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

// Would catch: a last data line of few or many characters lost or refused. A sum over one
// character is no line: 43 readings and each 64 more end in it.
TEST_F(cScanning, TakesEveryLengthOfTheLastLineButOne) {
  for (const auto& [count, isTaken] : std::vector<std::pair<int, bool>>{
           {1, true}, {22, true}, {42, true}, {64, true}, {65, true}, {43, false}, {171, false}}) {
    const std::size_t sent = start(count, 1);
    ASSERT_TRUE(sensor.waitForSentScans(sent + 1, LONG_TIME));
    EXPECT_EQ(driver->abortScan(), 0);
    EXPECT_EQ(distancesOf(driver->getScanFirst()),
              isTaken ? measured(sent, count) : std::vector<int>())
        << count;
  }
  startSurely(sensor, *driver, 100, 270, 1, 1, 4095);  // 171, two characters each
  EXPECT_EQ(distancesOf(takeScan(*driver)).size(), 171u);
}

// Would catch: scans lost with the abort, taken from the wrong end, a sensor that scans on.
TEST_F(cScanning, KeepsUnreadScansOverAnAbortAndStartsAgain) {
  const std::size_t sent = start(9, 5);
  ASSERT_TRUE(sensor.waitForSentScans(sent + 5, LONG_TIME));
  EXPECT_TRUE(driver->isScanning()) << "until it is aborted";
  EXPECT_EQ(driver->abortScan(), 0);
  EXPECT_FALSE(driver->isScanning());
  int count = 0;
  EXPECT_EQ(outputOf([&] { count = driver->getScanNum(); }).err,
            "tryRecordToScan :: no listener ready.\n");
  EXPECT_EQ(count, 5);
  EXPECT_EQ(distancesOf(driver->getScanFirst()), measured(sent, 9));
  EXPECT_EQ(distancesOf(driver->getScanLast()), measured(sent + 4, 9));
  EXPECT_FALSE(driver->getScanLast(0));
  EXPECT_EQ(driver->getScanNum(), 3);

  start(9, 0);
  EXPECT_TRUE(driver->waitScan(LONG));
  EXPECT_EQ(driver->abortScan(), 0);
  EXPECT_FALSE(sensor.isScanning());
  EXPECT_EQ(driver->abortScan(), -1);
}

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

TEST_F(cScanning, WaitingWithoutARunningScanStopsTheProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(driver->waitScan(1), "px != 0");
  EXPECT_DEATH(driver->waitScan(), "px != 0");
}

// Would catch: an old scan's records mixed into a new one, a running scan lost to a refused start.
TEST_F(cScanning, ANewStartReplacesTheRunningScan) {
  ASSERT_TRUE(sensor.waitForSentScans(start(9, 0) + 3, LONG_TIME));
  start(30, 0);
  for (int i = 0; i < 5; ++i) EXPECT_EQ(distancesOf(takeScan(*driver)).size(), 30u);
  EXPECT_EQ(driver->startScan(100, 9999, 1, 0, 0, 5600), -1) << "there are no such steps";
  EXPECT_TRUE(driver->isScanning());
  EXPECT_EQ(distancesOf(takeScan(*driver)).size(), 30u);
  EXPECT_EQ(driver->abortScan(), 0);
}

// Would catch: a buffer overrun or an overflow by arguments that no sensor takes.
TEST(Start, LineHoldsTheArguments) {
  struct cRow {
    int first, last, cluster, interval, scans, longest;
    const char* line;
  };
  for (const cRow& row : {cRow{0, 768, 1, 0, 0, 4095, "MS0000076801000;1"},
                          cRow{0, 768, 1, 0, 0, 4096, "MD0000076801000;1"},
                          cRow{-1, -2, -3, -4, -5, -6, "MS-001-002-3-4-5;1"},
                          cRow{INT_MAX, INT_MAX, INT_MAX, INT_MAX, INT_MAX, INT_MAX,
                               "MD21474836472147483647214748364721474836472147483647;1"},
                          cRow{INT_MIN, INT_MIN, INT_MIN, INT_MIN, INT_MIN, INT_MIN,
                               "MS-2147483648-2147483648-2147483648-2147483648-2147483648;1"}}) {
    cScriptedDriver driver([](const std::string& line) { return cScriptedPeer::respond(line); });
    driver->startScan(row.first, row.last, row.cluster, row.interval, row.scans, row.longest);
    EXPECT_EQ(driver.peer.waitLines(1), std::vector<std::string>{row.line});
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
