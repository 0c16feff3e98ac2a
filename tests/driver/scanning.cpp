#include <gtest/gtest.h>

#include <climits>

#include "tests/driver/cScriptedSensor.h"
#include "tests/driver/support.h"

namespace {

constexpr double FULL_TURN = 6.283185307179586;

struct cModelCase {
  eSimModel model;
  int first, last, front, perTurn;
  int longest;  // millimetres: of MS, or beyond it
};

std::ostream& operator<<(std::ostream& out, const cModelCase& of) {
  return out << of.perTurn << '.' << of.last << '.' << of.longest;
}

const cModelCase MODELS[] = {
    {eSimModel::SHORT_RANGE, 44, 725, 384, 1024, 4095},
    {eSimModel::SHORT_RANGE, 44, 725, 384, 1024, 4096},
    {eSimModel::MIDDLE_RANGE, 0, 768, 384, 1024, 4095},
    {eSimModel::MIDDLE_RANGE, 0, 768, 384, 1024, 8000},
    {eSimModel::LONG_RANGE, 0, 1080, 540, 1440, 4095},
    {eSimModel::LONG_RANGE, 0, 1080, 540, 1440, 60000},
};

class cModel : public testing::TestWithParam<cModelCase> {
 protected:
  cSimSensor sensor{quick(GetParam().model)};
  tDriver2 driver = openReady(sensor.getPath());
};

// Would catch: a wrong decoding, order, angle or count on any model.
TEST_P(cModel, GivesWhatTheSensorMeasured) {
  const cModelCase& model = GetParam();
  const int most = model.longest > 4095 ? INT_MAX : 4095;
  std::size_t taken = 0;
  for (const int cluster : {0, 1, 3, 99}) {
    ASSERT_EQ(driver->startScan(model.first, model.last, cluster, 0, 2, model.longest), 0);
    for (int i = 0; i < 2; ++i) {
      const tScan scan = takeScan(*driver);
      ASSERT_TRUE(scan);
      EXPECT_EQ(distancesOf(scan), truth(sensor, taken++, model.first, model.last, cluster, most));
      const double step = cluster * FULL_TURN / model.perTurn;
      const double first = (model.first - model.front) * FULL_TURN / model.perTurn;
      EXPECT_DOUBLE_EQ(scan->angleStep, step);
      EXPECT_DOUBLE_EQ(scan->firstAngle, first);
      EXPECT_DOUBLE_EQ(scan->lastAngle, (model.last - model.front) * FULL_TURN / model.perTurn);
      EXPECT_DOUBLE_EQ(scan->points.back().angle,
                       first + step * static_cast<double>(scan->points.size() - 1));
    }
    EXPECT_EQ(driver->abortScan(), 0);
  }
}

INSTANTIATE_TEST_SUITE_P(Models, cModel, testing::ValuesIn(MODELS));

class cScanning : public testing::Test {
 protected:
  /// `count` readings a scan, `scans` times (0: without end), in three characters.
  int start(int count, int scans) {
    return driver->startScan(100, 100 + count - 1, 1, 0, scans, 5600);
  }

  std::vector<int> measured(std::size_t index, int count) {
    return truth(sensor, index, 100, 100 + count - 1);
  }

  cSimSensor sensor{quick()};
  tDriver2 driver = openReady(sensor.getPath());
};

// Would catch: a last data line of few or many characters lost or refused. A sum over one
// character is no line: 43 readings and each 64 more end in it.
TEST_F(cScanning, TakesEveryLengthOfTheLastLineButOne) {
  std::size_t sent = 0;
  for (const auto& [count, isTaken] : std::vector<std::pair<int, bool>>{
           {1, true}, {22, true}, {42, true}, {64, true}, {65, true}, {43, false}, {171, false}}) {
    ASSERT_EQ(start(count, 1), 0);
    ASSERT_TRUE(sensor.waitForSentScans(++sent, LONG_TIME));
    EXPECT_EQ(driver->abortScan(), 0);
    EXPECT_EQ(distancesOf(driver->getScanFirst()),
              isTaken ? measured(sent - 1, count) : std::vector<int>())
        << count;
  }
  ASSERT_EQ(driver->startScan(100, 270, 1, 0, 1, 4095), 0);  // 171, two characters each
  EXPECT_EQ(distancesOf(takeScan(*driver)).size(), 171U);
}

TEST_F(cScanning, KeepsUnreadScansOverAnAbortAndStartsAgain) {
  ASSERT_EQ(start(9, 5), 0);
  ASSERT_TRUE(sensor.waitForSentScans(5, LONG_TIME));
  EXPECT_TRUE(driver->isScanning()) << "until it is aborted";
  EXPECT_EQ(driver->abortScan(), 0);
  EXPECT_FALSE(driver->isScanning());
  int count = 0;
  EXPECT_EQ(outputOf([&] { count = driver->getScanNum(); }).err,
            "tryRecordToScan :: no listener ready.\n");
  EXPECT_EQ(count, 5);
  EXPECT_EQ(distancesOf(driver->getScanFirst()), measured(0, 9));
  EXPECT_EQ(distancesOf(driver->getScanLast()), measured(4, 9));
  EXPECT_EQ(driver->getScanNum(), 3);
  EXPECT_FALSE(driver->getScanLast(0));
  EXPECT_EQ(driver->getScanNum(), 3);

  ASSERT_EQ(start(9, 0), 0);
  EXPECT_TRUE(driver->waitScan(LONG));
  EXPECT_EQ(driver->abortScan(), 0);
  EXPECT_FALSE(sensor.isScanning());
  EXPECT_EQ(driver->abortScan(), -1);
}

TEST_F(cScanning, WaitsConvertOneScanOrDiscardIt) {
  ASSERT_EQ(start(9, 3), 0);
  EXPECT_EQ(driver->waitScan(), 1);
  EXPECT_TRUE(driver->waitScan(LONG));
  EXPECT_TRUE(driver->waitScan(LONG));
  EXPECT_TRUE(driver->waitScan(0)) << "two scans wait";
  EXPECT_EQ(distancesOf(driver->getScanFirst()), measured(1, 9));
  EXPECT_EQ(distancesOf(driver->getScanFirst()), measured(2, 9));
  EXPECT_FALSE(driver->waitScan(1));
}

TEST_F(cScanning, WaitingWithoutARunningScanStopsTheProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(driver->waitScan(1), "px != 0");
  EXPECT_DEATH(driver->waitScan(), "px != 0");
}

// Would catch: a scan made of damaged distances, or good ones lost with it.
TEST_F(cScanning, DropsARecordWithABadSum) {
  std::size_t sent = 0;
  for (const int line : {1, 2, -1}) {  // the sensor's time, the first and the last of the data
    sensor.setFault(eSimFault::WRONG_SUM, line, "scan", 1);
    ASSERT_EQ(start(60, 3), 0);
    ASSERT_TRUE(sensor.waitForSentScans(sent + 3, LONG_TIME));
    EXPECT_EQ(driver->abortScan(), 0);
    EXPECT_EQ(distancesOf(driver->getScanFirst()), measured(sent + 1, 60));
    EXPECT_EQ(distancesOf(driver->getScanFirst()), measured(sent + 2, 60));
    EXPECT_FALSE(driver->getScanFirst());
    sent += 3;
  }
}

// Would catch: an old scan's records mixed into a new one.
TEST_F(cScanning, ANewStartReplacesTheRunningScan) {
  ASSERT_EQ(start(9, 0), 0);
  ASSERT_TRUE(sensor.waitForSentScans(3, LONG_TIME));
  ASSERT_EQ(start(30, 0), 0);
  for (int i = 0; i < 5; ++i) EXPECT_EQ(distancesOf(takeScan(*driver)).size(), 30U);
  EXPECT_EQ(start(9999, 0), -1) << "there are no such steps";
  EXPECT_TRUE(driver->isScanning());
  EXPECT_EQ(distancesOf(takeScan(*driver)).size(), 30U) << "the refused one replaces nothing";
  EXPECT_EQ(driver->abortScan(), 0);
}

// --- starting ----------------------------------------------------------------------------

struct cStart {
  const char* name;
  std::string status;  // the line; "": no answer
  std::string message;
};

std::ostream& operator<<(std::ostream& out, const cStart& of) { return out << of.name; }

class cRefusedStart : public testing::TestWithParam<cStart> {};

TEST_P(cRefusedStart, SaysWhyAndKeepsNothing) {
  cScriptedSensor sensor([](const std::string& line) {
    const std::string& status = GetParam().status;
    if (status.empty() || line[0] != 'M') return line[0] == 'M' ? "" : record(line, "00");
    return line + "\n" + status + "\n\n" + record(line, "99", summed("0001") + "\n");
  });
  const tDriver2 driver = openReady(sensor.getPath());
  int result = 0;
  const cOutput output = outputOf([&] { result = driver->startScan(0, 9, 1, 0, 0, 4095); });
  EXPECT_EQ(result, -1);
  EXPECT_EQ(output.err, GetParam().message);
  EXPECT_EQ(output.out, "");
  EXPECT_FALSE(driver->isScanning());
  EXPECT_EQ(driver->stopAll(), 0);
}

INSTANTIATE_TEST_SUITE_P(
    Starts, cRefusedStart,
    testing::Values(
        cStart{"Number", summed("04"), " startScan:: scip2Status:4\n startScan:: error??\n"},
        cStart{"Letter", summed("0C"), " startScan:: scip2ExtStatus:0C\n startScan:: error??\n"},
        cStart{"BadSum", "00x", " startScan:: error??\n"},
        cStart{"Silence", "", " startScan:: comm error??\n"}));

struct cCommandLine {
  int first, last, cluster, interval, scans, longest;
  std::string line;
};

std::ostream& operator<<(std::ostream& out, const cCommandLine& of) { return out << of.line; }

class cStartLine : public testing::TestWithParam<cCommandLine> {};

// Would catch: a buffer overrun or an overflow by arguments that no sensor takes.
TEST_P(cStartLine, HoldsTheArguments) {
  const cCommandLine& given = GetParam();
  cScriptedSensor sensor([](const std::string& line) { return record(line, "00"); });
  const tDriver2 driver = openDriver(sensor.getPath());
  EXPECT_EQ(driver->startScan(given.first, given.last, given.cluster, given.interval, given.scans,
                              given.longest),
            0);
  EXPECT_EQ(sensor.getCommands(), std::vector<std::string>{given.line});
}

INSTANTIATE_TEST_SUITE_P(
    Lines, cStartLine,
    testing::Values(cCommandLine{0, 768, 1, 0, 0, 4095, "MS0000076801000;1"},
                    cCommandLine{0, 768, 1, 0, 0, 4096, "MD0000076801000;1"},
                    cCommandLine{44, 725, 99, 9, 99, 5600, "MD0044072599999;1"},
                    cCommandLine{-1, -2, -3, -4, -5, -6, "MS-001-002-3-4-5;1"},
                    cCommandLine{INT_MAX, INT_MAX, INT_MAX, INT_MAX, INT_MAX, INT_MAX,
                                 "MD21474836472147483647214748364721474836472147483647;1"},
                    cCommandLine{INT_MIN, INT_MIN, INT_MIN, INT_MIN, INT_MIN, INT_MIN,
                                 "MS-2147483648-2147483648-2147483648-2147483648-2147483648;1"}));

// Would catch: a record without data, or with a trouble status, made a scan or ending the scan.
TEST(cEmptyRecord, MakesNoScan) {
  cScriptedSensor sensor([](const std::string& line) {
    if (line[0] != 'M') return record(line, "00");
    const std::string time = summed("0001") + "\n";
    return record(line, "00") + record(line, "50") + record(line, "99", time) +
           record(line, "99", time + summed("CB1D") + "\n");
  });
  const tDriver2 driver = openReady(sensor.getPath());
  ASSERT_EQ(driver->startScan(0, 1, 1, 0, 0, 4095), 0);
  EXPECT_FALSE(driver->waitScan(LONG)) << "one came: no body";
  EXPECT_FALSE(driver->waitScan(LONG)) << "one came: a time without data";
  EXPECT_TRUE(driver->waitScan(LONG));
  EXPECT_EQ(distancesOf(driver->getScanFirst()), (std::vector<int>{1234, 84}));
}

}  // namespace
