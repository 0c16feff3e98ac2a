// What a line makes of the sensor's words.

#include <atomic>

#include "tests/faults/cChild.h"
#include "tests/faults/cFaultRig.h"
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

/// Does it; that it throws tells damage.
void tryTo(const std::function<void()>& action) {
  try {
    action();
  } catch (const std::out_of_range&) {
  }
}

/// One of the first few tries is 0: an answer that came late spoils the next exchange.
void expectSoon(const std::function<int()>& attempt) {
  for (int count = 0; count < 4; ++count)
    if (attempt() == 0) return;
  ADD_FAILURE() << "it does not recover";
}

/// Every record of a scan is harmed, and then each answer.
void harm(const cRow& row, cFaultRig& rig) {
  rig.scan();
  const bool isOfAnswers = row.fault == F::LATE || row.fault == F::NO_ANSWER;
  rig.sensor.setFault(row.fault, row.value, isOfAnswers ? "answer" : "scan");
  const std::uint64_t before = rig.sensor.getCounters().records;
  const auto hasSent20 = [&] { return rig.sensor.getCounters().records >= before + 20; };
  rig.oracle.during("taking scans", 2000, [&] { rig.oracle.follow(rig.face, hasSent20); });
  rig.sensor.setFault(row.fault, row.value, "answer");
  rig.oracle.during("a command", READ + ANSWER,
                    [&] { tryTo([&] { rig.face.fetchVersionStr(); }); });
  rig.sensor.clearFaults();
}

/// SCIP 1.x asks for each scan, and only lengths tell what became of it.
void harmScip1(const cRow& row, cFaultRig& rig) {
  for (std::uint64_t scan = 1; scan <= 3; ++scan) {
    rig.sensor.setFault(row.fault, row.value, "", 1);
    rig.oracle.during("a scan", 2 * READ,
                      [&] { rig.driver->getSCIP1IF()->doScan(FIRST, LAST, 1); });
    rig.sensor.clearFaults();
    rig.oracle.take(rig.face, row.lies1 == MANY ? 0 : LONG);
    if (row.fault == F::LATE) {
      EXPECT_TRUE(rig.sensor.waitForSentScans(scan, LONG_TIME));
    }
  }
}

void expectBorne(const cRow& row, eSimDialect dialect) {
  const bool isScip1 = dialect == eSimDialect::SCIP1;
  cFaultRig rig(paced(dialect));
  (isScip1 ? harmScip1 : harm)(row, rig);
  const eLies most = isScip1 ? row.lies1 : row.lies;
  if (most != MANY) {
    EXPECT_LE(rig.oracle.lies, most == SOME ? rig.oracle.count() / 4 : 0) << rig.oracle.count();
  }
  if (!isScip1) rig.oracle.expectTrueScan(rig.face);
  expectSoon([&] { return rig.face.fetchVersionStr(); });
  if (isScip1) {
    expectSoon([&] { return rig.driver->getSCIP1IF()->doScan(FIRST, LAST, 1); });
  } else {
    EXPECT_TRUE(stopLeftScan(rig.face));
  }
}

class cContent : public testing::TestWithParam<std::tuple<cRow, eSimDialect>> {};

TEST_P(cContent, IsBorne) {
  runTest(std::get<1>(GetParam()), [] { std::apply(expectBorne, GetParam()); });
}

INSTANTIATE_TEST_SUITE_P(Records, cContent, testing::Combine(testing::ValuesIn(ROWS), DIALECTS),
                         cRowName());

// --- each bit of one record --------------------------------------------------------------

struct cKind {
  const char* name;
  bool (*ask)(cSensorDriverSCIP2&);  // true: something came that was taken for good
};

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

class cFlippedBit : public testing::TestWithParam<cKind> {};

TEST_P(cFlippedBit, OfAnAnswerIsToldUnlessTheSumCannot) {
  const cKind& kind = GetParam();
  std::atomic<cSimSensor*> itself{nullptr};
  cSimSetting setting = paced(eSimDialect::SCIP2, 0);
  // An answer that nobody knows any more costs no time-out: it is followed by another.
  setting.onCommand = [&](const std::string& line) {
    itself.load()->say("\n\n" + line + "\n99b\n\n");
  };
  cSimSensor sensor(setting);
  itself = &sensor;
  cFaultOracle oracle(sensor);
  const tDriver2 driver = openReady(sensor.getPath());
  ASSERT_EQ(driver->doLaser(true), 0);
  const std::uint64_t before = sensor.getCounters().bytesWritten;
  ASSERT_TRUE(kind.ask(*driver));
  const std::string clean = describe(*driver);
  const int bits = 8 * static_cast<int>(sensor.getCounters().bytesWritten - before);
  for (int bit = 0; bit < bits; ++bit) {
    sensor.setFault(eSimFault::FLIPPED_BIT, bit, kind.name, 1);
    const int lies = oracle.lies;
    const bool isSeen = bit % 8 < 6;  // the sums have six bits: they do not see the two above
    tryTo([&] {
      kind.ask(*driver);
      oracle.take(*driver, isSeen ? LONG : 0);
    });
    const bool isSame = describe(*driver) == clean;
    ASSERT_TRUE((isSame && oracle.lies == lies) || !isSeen) << "bit " << bit;
    if (!isSame) {
      ASSERT_TRUE(kind.ask(*driver));
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Answers, cFlippedBit, testing::ValuesIn(ANSWERS), cCaseName());

/// Says it, and waits until it is said: only so much may wait to leave.
void say(cSimSensor& sensor, const std::string& text) {
  const std::uint64_t written = sensor.getCounters().bytesWritten;
  sensor.say(text);
  ASSERT_TRUE(sensor.waitFor(&cSimCounters::bytesWritten, written + text.size(), LONG_TIME));
}

/// Takes what scans there are; how many of them are what `real` says, or what the sensor sent.
int countTrue(cFaultRig& rig, const std::vector<int>& real) {
  int count = 0;
  tryTo([&] {
    while (rig.face.getScanNum() > 0) {
      const std::vector<int> distances = distancesOf(rig.face.getScanFirst());
      if (distances == real || rig.oracle.judge(distances)) ++count;
    }
  });
  return count;
}

// Would catch: a scan whose sums are not tested, or a flipped bit that costs more than its record
// and the next.
TEST(cFlippedBit, OfAScanIsToldUnlessTheSumCannot) {
  for (const int most : {FAR, NEAR}) {
    cFaultRig rig(paced());
    ASSERT_EQ(startScan(rig.face, 1, most), 0);
    const std::vector<int> real = distancesOf(takeScan(rig.face));
    const std::string body = rig.driver->getResponseBody();
    ASSERT_EQ(startScan(rig.face, 0, most), 0);
    const std::string record = rig.sensor.getCommands().back() + "\n99b\n" + body + "\n";
    int count = 0;
    int truths = 0;
    for (std::size_t bit = 0; bit < 8 * record.size(); ++bit) {
      if (bit % 8 >= 6) continue;  // the sums have six bits
      std::string flipped = record;
      flipped[bit / 8] = static_cast<char>(flipped[bit / 8] ^ (1 << (bit % 8)));
      say(rig.sensor, flipped + record);
      ++count;
      truths += countTrue(rig, real);
    }
    rig.sensor.say("\n\n");
    EXPECT_TRUE(stopLeftScan(rig.face));
    truths += countTrue(rig, real);
    EXPECT_GE(truths, count - 30) << "of " << count;
    EXPECT_EQ(rig.oracle.lies, 0);
  }
}

// Would catch: a crash on a bit of SCIP 1.x, or a scan of another length. Nothing tells the rest.
TEST(cFlippedBit, OfScip1EndsNoProcess) {
  std::atomic<cSimSensor*> itself{nullptr};
  cSimSetting setting = paced(eSimDialect::SCIP1, 0);
  setting.onCommand = [&](const std::string&) { itself.load()->say("\n\n"); };  // ends any record
  cSimSensor sensor(setting);
  itself = &sensor;
  const tDriver driver = openAny(sensor);
  iSCIP1IF& face = *driver->getSCIP1IF();
  iSCIP2IF& list = *driver->getSCIP2IF();
  for (int bit = 0; bit < 8 * 220; ++bit) {
    sensor.setFault(eSimFault::FLIPPED_BIT, bit, "", 2);
    face.doVersion();
    face.doScan(FIRST, LAST, 1);
    while (list.getScanNum() > 0) ASSERT_EQ(list.getScanFirst()->points.size(), POINTS);
  }
  sensor.clearFaults();
  expectSoon([&] { return face.doVersion(); });
}

// --- no end ------------------------------------------------------------------------------

// Would catch: memory that grows with what a line that babbles says.
TEST(cEndless, CostsNoMemory) {
  const std::string line(1 << 16, 'o');
  std::string body = line;
  for (std::size_t i = 63; i < body.size(); i += 64) body[i] = '\n';
  cFaultRig rig(paced());
  rig.scan();
  const std::size_t before = countAllocated();
  for (int piece = 0; piece < 144; ++piece) {  // a line of 8 MB and a body of 1 MB
    say(rig.sensor, piece < 128 ? line : body);
    EXPECT_LE(countAllocated(), before + (1 << 20));
    rig.oracle.take(rig.face);
  }
  rig.sensor.say("\n\n");
  rig.oracle.expectTrueScan(rig.face);
  EXPECT_EQ(rig.oracle.lies, 0);
}

}  // namespace
