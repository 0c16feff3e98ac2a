// What a line makes of the sensor's words.

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>

#include "tests/faults/cFaultOracle.h"
#include "tests/support/cCaseName.h"

namespace {

// --- a fault in every record -------------------------------------------------------------

enum eLies { NONE, SOME, MANY };

struct cRow {
  const char* name;
  eSimFault fault;
  int value;
  eLies lies = NONE;   // what sums and lengths of SCIP 2.0 cannot tell
  eLies lies1 = NONE;  // what lengths alone cannot tell
};

std::ostream& operator<<(std::ostream& out, const cRow& row) { return out << row.name; }

using F = eSimFault;
// Each would catch: a scan that is not what was measured, a reader that does not find the next
// record, an answer taken for another's, a crash on a line that is short, long or not there.
const cRow ROWS[] = {
    {"LostByte", F::LOST_BYTES, 1},
    {"Lost12Bytes", F::LOST_BYTES, 12},
    {"Lost66Bytes", F::LOST_BYTES, 66},
    {"LostEchoLineFeed", F::LOST_LINE_FEED, 0},
    {"LostStatusLineFeed", F::LOST_LINE_FEED, 1},
    {"LostDataLineFeed", F::LOST_LINE_FEED, 3},
    {"LostClosingLine", F::LOST_END, 0},
    {"LostEcho", F::LOST_LINE, 0},
    {"LostLastLine", F::LOST_LINE, -1},
    {"DoubledEcho", F::DOUBLED_LINE, 0},
    {"DoubledStatus", F::DOUBLED_LINE, 1},
    {"DoubledData", F::DOUBLED_LINE, 3},
    {"SwappedEchoAndStatus", F::SWAPPED_LINES, 0},
    {"SwappedStatusAndTime", F::SWAPPED_LINES, 1},
    {"SwappedTimeAndData", F::SWAPPED_LINES, 2, NONE, MANY},
    {"SwappedData", F::SWAPPED_LINES, 3, MANY, MANY},
    {"Nul", F::FORCED_BYTE, 0, SOME, MANY},
    {"EndOfFileByte", F::FORCED_BYTE, 0xFF, SOME, MANY},
    {"HighByte", F::FORCED_BYTE, 0x80, SOME, MANY},
    {"WrongStatusSum", F::WRONG_SUM, 0},
    {"WrongDataSum", F::WRONG_SUM, 2, NONE, MANY},
    {"EmptyStatus", F::EMPTY_STATUS, 0},
    {"CarriageReturns", F::CR_LF, 0},
    {"StatusWithLetter", F::STATUS, simStatus("0E")},
    {"UnknownStatus", F::STATUS, 77},
    {"OtherCommand", F::OTHER_ECHO, 0},
    {"OtherTag", F::OTHER_TAG, 1},
    {"ScanBetween", F::UNSOLICITED, 4},
    {"LateAnswer", F::LATE, ANSWER + READ},
    {"NoAnswer", F::NO_ANSWER, 0},
    {"Garbage", F::GARBAGE, 40},
    {"CutShort", F::CUT_SHORT, 0},
    {"EndlessBody", F::ENDLESS_BODY, 2000},
    {"OneReadingLess", F::WRONG_COUNT, -1},
    {"OneReadingMore", F::WRONG_COUNT, 1},
    {"ThirtyReadingsMore", F::WRONG_COUNT, 30},
};

class cContent : public testing::TestWithParam<cRow> {
 protected:
  static void expectHonest(const cFaultOracle& oracle, eLies most) {
    const int scans = oracle.truths + oracle.told + oracle.lies;
    if (most != MANY) {
      EXPECT_LE(oracle.lies, most == SOME ? scans / 4 : 0) << scans << " scans";
    }
  }
};

/// Whether one of the first few tries succeeds: an answer that came late spoils the next exchange.
bool succeedsSoon(const std::function<bool()>& attempt) {
  for (int count = 0; count < 4; ++count)
    if (attempt()) return true;
  return false;
}

TEST_P(cContent, OfScip2IsBorne) {
  cSimSensor sensor(paced());
  cFaultOracle oracle(sensor);
  const tDriver2 driver = openReady(sensor.getPath());
  startScan(*driver);
  oracle.expectTrueScan(*driver);

  const bool isOfAnswers = GetParam().fault == F::LATE || GetParam().fault == F::NO_ANSWER;
  sensor.setFault(GetParam().fault, GetParam().value, isOfAnswers ? "answer" : "scan");
  const std::uint64_t before = sensor.getCounters().records;
  const auto hasSent20 = [&] { return sensor.getCounters().records >= before + 20; };
  oracle.during("taking scans", 2000, [&] { oracle.follow(*driver, hasSent20); });
  sensor.setFault(GetParam().fault, GetParam().value, "answer");
  oracle.during("a command", READ + ANSWER, [&] {
    try {
      driver->fetchVersionStr();
    } catch (const std::out_of_range&) {
    }
  });
  expectHonest(oracle, GetParam().lies);

  sensor.clearFaults();
  oracle.expectTrueScan(*driver);
  EXPECT_TRUE(succeedsSoon([&] { return driver->fetchVersionStr() == 0; }));
  EXPECT_TRUE(stopLeftScan(*driver));
}

/// SCIP 1.x asks for each scan, and only lengths tell what became of it.
void askScip1(const cRow& row, const std::function<void(const cFaultOracle&)>& expectHonest) {
  cSimSensor sensor(paced(eSimDialect::SCIP1));
  cFaultOracle oracle(sensor);
  const tDriver1 driver = openDriver1(sensor.getPath());
  iSCIP2IF& list = *driver->getSCIP2IF();
  for (int scan = 0; scan < 3; ++scan) {
    sensor.setFault(row.fault, row.value, "", 1);
    oracle.during("a scan", 2 * READ, [&] { driver->doScan(FIRST, LAST, 1); });
    sensor.clearFaults();
    while (const tScan taken = list.getScanNum() > 0 ? list.getScanFirst() : tScan())
      oracle.judge(distancesOf(taken), row.lies1 == MANY ? 0 : 2000);
    if (row.fault == F::LATE) {
      EXPECT_TRUE(sensor.waitForSentScans(static_cast<std::uint64_t>(scan) + 1, LONG_TIME));
    }
  }
  expectHonest(oracle);
  EXPECT_TRUE(succeedsSoon([&] { return driver->doVersion() == 0; }));
  EXPECT_TRUE(succeedsSoon([&] { return driver->doScan(FIRST, LAST, 1) == 0; }));
}

TEST_P(cContent, OfScip1IsBorne) {
  EXPECT_CLEAN_OR_DELIBERATE(askScip1(
      GetParam(), [](const cFaultOracle& oracle) { expectHonest(oracle, GetParam().lies1); }));
}

INSTANTIATE_TEST_SUITE_P(Records, cContent, testing::ValuesIn(ROWS), cCaseName());

// --- each bit of one record --------------------------------------------------------------

struct cKind {
  const char* name;
  bool (*ask)(cSensorDriverSCIP2&);  // true: something came that was taken for good
};

std::ostream& operator<<(std::ostream& out, const cKind& kind) { return out << kind.name; }

bool getStored(cSensorDriverSCIP2& driver, int most) {
  return driver.getStoredScan(FIRST, LAST, 1, most) == 0;
}

// Would catch: a sum that is not tested, or not over all of its line; a crash on what is no number.
const cKind ANSWERS[] = {
    {"VV", [](cSensorDriverSCIP2& driver) { return driver.fetchVersionStr() == 0; }},
    {"PP", [](cSensorDriverSCIP2& driver) { return driver.fetchParameters() == 0; }},
    {"II", [](cSensorDriverSCIP2& driver) { return driver.updateStatus() == 0; }},
    {"QT", [](cSensorDriverSCIP2& driver) { return driver.stopAll() == 0; }},
    {"GD", [](cSensorDriverSCIP2& driver) { return getStored(driver, FAR); }},
    {"GS", [](cSensorDriverSCIP2& driver) { return getStored(driver, NEAR); }},
};

/// All that a caller can read of a driver.
std::string describe(cSensorDriverSCIP2& driver) {
  return driver.getVend() + driver.getProd() + driver.getFirm() + driver.getProt() +
         driver.getSerial() + driver.getStatus() + std::to_string(driver.getMinSpot()) + "," +
         std::to_string(driver.getMaxSpot()) + "," + std::to_string(driver.getFrontSpot()) + "," +
         std::to_string(driver.getMinDist()) + "," + std::to_string(driver.getMaxDist()) + "," +
         std::to_string(driver.getNumSpot()) + "," + std::to_string(driver.getScanSpeed());
}

/// A sensor at full speed.
cSimSetting unpaced(eSimDialect dialect) {
  cSimSetting setting = paced(dialect);
  setting.paced = false;
  return setting;
}

class cFlippedBit : public testing::TestWithParam<cKind> {};

TEST_P(cFlippedBit, OfAnAnswerIsToldUnlessTheSumCannot) {
  const cKind& kind = GetParam();
  std::unique_ptr<cSimSensor> sensor;
  cSimSetting setting = unpaced(eSimDialect::SCIP2);
  // An answer that nobody knows any more costs no time-out: it is followed by another.
  setting.onCommand = [&](const std::string& line) { sensor->say("\n\n" + line + "\n99b\n\n"); };
  sensor = std::make_unique<cSimSensor>(setting);
  cFaultOracle oracle(*sensor);
  const tDriver2 driver = openReady(sensor->getPath());
  ASSERT_EQ(driver->doLaser(true), 0);
  const std::uint64_t before = sensor->getCounters().bytesWritten;
  ASSERT_TRUE(kind.ask(*driver));
  const std::string clean = describe(*driver);
  const int bits = 8 * static_cast<int>(sensor->getCounters().bytesWritten - before);
  for (int bit = 0; bit < bits; ++bit) {
    sensor->setFault(eSimFault::FLIPPED_BIT, bit, kind.name, 1);
    const int lies = oracle.lies;
    const bool isSeen = bit % 8 < 6;  // the sums have six bits: they do not see the two above
    try {
      kind.ask(*driver);
      while (driver->getScanNum() > 0)
        oracle.judge(distancesOf(driver->getScanFirst()), isSeen ? 2000 : 0);
    } catch (const std::out_of_range&) {
    }
    const bool isSame = describe(*driver) == clean;
    ASSERT_TRUE((isSame && oracle.lies == lies) || !isSeen) << "bit " << bit;
    if (!isSame) {
      ASSERT_TRUE(kind.ask(*driver));
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Answers, cFlippedBit, testing::ValuesIn(ANSWERS), cCaseName());

/// Takes what scans there are; how many of them are what `real` says, or what the sensor sent.
int countTrue(cSensorDriverSCIP2& driver, cFaultOracle& oracle, const std::vector<int>& real) {
  int count = 0;
  try {
    while (driver.getScanNum() > 0) {
      const std::vector<int> distances = distancesOf(driver.getScanFirst());
      count += distances == real || oracle.judge(distances) ? 1 : 0;
    }
  } catch (const std::out_of_range&) {
  }
  return count;
}

// Would catch: a scan whose sums are not tested, or a flipped bit that costs more than its record
// and the next.
TEST(cFlippedBit, OfAScanIsToldUnlessTheSumCannot) {
  for (const int most : {FAR, NEAR}) {
    cSimSensor sensor(paced());
    cFaultOracle oracle(sensor);
    const tDriver2 driver = openReady(sensor.getPath());
    ASSERT_EQ(driver->startScan(FIRST, LAST, 1, 0, 1, most), 0);
    const std::vector<int> real = distancesOf(takeScan(*driver));
    const std::string body = driver->getResponseBody();
    ASSERT_EQ(driver->startScan(FIRST, LAST, 1, 0, 0, most), 0);
    const std::string record = sensor.getCommands().back() + "\n99b\n" + body + "\n";
    int count = 0;
    int truths = 0;
    for (std::size_t bit = 0; bit < 8 * record.size(); ++bit) {
      if (bit % 8 >= 6) continue;  // the sums have six bits
      std::string flipped = record;
      flipped[bit / 8] = static_cast<char>(flipped[bit / 8] ^ (1 << (bit % 8)));
      sensor.say(flipped + record);
      ++count;
      truths += countTrue(*driver, oracle, real);
    }
    sensor.say("\n\n");
    EXPECT_TRUE(stopLeftScan(*driver));
    truths += countTrue(*driver, oracle, real);
    EXPECT_GE(truths, count - 30) << "of " << count;
    EXPECT_EQ(oracle.lies, 0);
  }
}

// Would catch: a crash on a bit of SCIP 1.x, or a scan of another length. Nothing tells the rest.
TEST(cFlippedBitOfScip1, EndsNoProcess) {
  std::unique_ptr<cSimSensor> sensor;
  cSimSetting setting = unpaced(eSimDialect::SCIP1);
  setting.onCommand = [&](const std::string&) { sensor->say("\n\n"); };  // ends any record
  sensor = std::make_unique<cSimSensor>(setting);
  const tDriver1 driver = openDriver1(sensor->getPath());
  iSCIP2IF& list = *driver->getSCIP2IF();
  for (int bit = 0; bit < 8 * 220; ++bit) {
    sensor->setFault(eSimFault::FLIPPED_BIT, bit, "", 2);
    driver->doVersion();
    driver->doScan(FIRST, LAST, 1);
    while (list.getScanNum() > 0) ASSERT_EQ(list.getScanFirst()->points.size(), POINTS);
  }
  sensor->clearFaults();
  EXPECT_TRUE(succeedsSoon([&] { return driver->doVersion() == 0; }));
}

// --- no end ------------------------------------------------------------------------------

// Would catch: memory that grows with what a line that babbles says.
TEST(cContent, WithoutAnEndCostsNoMemory) {
  const std::string line(1 << 16, 'o');
  std::string body = line;
  for (std::size_t i = 63; i < body.size(); i += 64) body[i] = '\n';
  cSimSensor sensor(paced());
  cFaultOracle oracle(sensor);
  const tDriver2 driver = openReady(sensor.getPath());
  startScan(*driver);
  oracle.expectTrueScan(*driver);
  const std::size_t before = countAllocated();
  for (int piece = 0; piece < 144; ++piece) {  // a line of 8 MB and a body of 1 MB
    const std::uint64_t written = sensor.getCounters().bytesWritten;
    sensor.say(piece < 128 ? line : body);
    ASSERT_TRUE(sensor.waitFor(&cSimCounters::bytesWritten, written + line.size(), LONG_TIME));
    EXPECT_LE(countAllocated(), before + (1 << 20));
    while (driver->getScanNum() > 0) oracle.judge(distancesOf(driver->getScanFirst()));
  }
  sensor.say("\n\n");
  oracle.expectTrueScan(*driver);
  EXPECT_EQ(oracle.lies, 0);
}

}  // namespace
