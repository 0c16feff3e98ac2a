// What a line makes of the sensor's words.

#include <atomic>
#include <sstream>

#include "tests/faults/cChild.h"

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
                    [&] { rig.oracle.tryTo([&] { rig.face.fetchVersionStr(); }); });
  rig.sensor.clearFaults();
  rig.oracle.expectTrueScan(rig.face);
  EXPECT_TRUE(stopLeftScan(rig.face));
}

/// SCIP 1.x asks for each scan, and only lengths tell what became of it.
void harmScip1(const cRow& row, cFaultRig& rig) {
  const auto scan = [&rig] { return rig.driver->getSCIP1IF()->doScan(FIRST, LAST, 1); };
  for (std::uint64_t count = 1; count <= 3; ++count) {
    rig.sensor.setFault(row.fault, row.value, "", 1);
    rig.oracle.during("a scan", 2 * READ, scan);
    rig.sensor.clearFaults();
    rig.oracle.take(rig.face, row.lies1 == MANY ? 0 : LONG);
    EXPECT_TRUE(row.fault != F::LATE || rig.sensor.waitForSentScans(count, LONG_TIME));
  }
  expectSoon(scan);
}

void expectBorne(const cRow& row, eSimDialect dialect) {
  const bool isScip1 = dialect == eSimDialect::SCIP1;
  cFaultRig rig(paced(dialect));
  (isScip1 ? harmScip1 : harm)(row, rig);
  expectSoon([&] { return rig.face.fetchVersionStr(); });
  const eLies most = isScip1 ? row.lies1 : row.lies;
  const int count = rig.oracle.truths + rig.oracle.told + rig.oracle.lies;
  EXPECT_TRUE(most == MANY || rig.oracle.lies <= (most == SOME ? count / 4 : 0))
      << rig.oracle.lies << " lies of " << count;
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
  int (*ask)(cSensorDriverSCIP2&);  // 0: something came that was taken for good
};

const cKind ANSWERS[] = {
    {"VV", [](cSensorDriverSCIP2& driver) { return driver.fetchVersionStr(); }},
    {"PP", [](cSensorDriverSCIP2& driver) { return driver.fetchParameters(); }},
    {"II", [](cSensorDriverSCIP2& driver) { return driver.updateStatus(); }},
    {"GD", [](cSensorDriverSCIP2& driver) { return driver.getStoredScan(FIRST, LAST, 1, FAR); }},
    {"GS", [](cSensorDriverSCIP2& driver) { return driver.getStoredScan(FIRST, LAST, 1, NEAR); }},
    {"QT", [](cSensorDriverSCIP2& driver) { return driver.stopAll(); }},
};

/// All that a caller can read of a driver.
std::string describe(const iInfo& driver) {
  std::ostringstream text;
  text << driver.getVend() << driver.getProd() << driver.getFirm() << driver.getProt()
       << driver.getSerial() << driver.getStatus() << driver.getMinSpot() << ','
       << driver.getMaxSpot() << ',' << driver.getFrontSpot() << ',' << driver.getMinDist() << ','
       << driver.getMaxDist();
  return text.str();
}

// Would catch: a sum that is not tested, or not over all of its line; a crash on what is no number.
TEST(cFlippedBit, OfAnAnswerIsToldUnlessTheSumCannot) {
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
  for (const cKind& kind : ANSWERS) {
    expectSoon([&] { return kind.ask(*driver); });
    const std::uint64_t before = sensor.getCounters().bytesWritten;
    ASSERT_EQ(kind.ask(*driver), 0);
    const std::string clean = describe(*driver);
    const int bits = 8 * static_cast<int>(sensor.getCounters().bytesWritten - before);
    for (int bit = 0; bit < bits; ++bit) {
      sensor.setFault(eSimFault::FLIPPED_BIT, bit, kind.name, 1);
      const int lies = oracle.lies;
      const bool isSeen = bit % 8 < 6;  // the sums have six bits: they do not see the two above
      oracle.tryTo([&] {
        kind.ask(*driver);
        oracle.take(*driver, isSeen ? LONG : 0);
      });
      const bool isSame = describe(*driver) == clean;
      ASSERT_TRUE((isSame && oracle.lies == lies) || !isSeen) << kind.name << " bit " << bit;
      ASSERT_TRUE(isSame || kind.ask(*driver) == 0);
    }
  }
}

// Would catch: a scan whose sums are not tested, or a flipped bit that costs more than its record
// and the next.
TEST(cFlippedBit, OfAScanIsToldUnlessTheSumCannot) {
  for (const int most : {FAR, NEAR}) {
    cFaultRig rig(paced(eSimDialect::SCIP2, 1000));
    rig.scan(0, most);
    const int bits = 8 * static_cast<int>(sizeof "MD0044014301000;2\n99b\n" - 1 + 1 + 6 +
                                          rig.driver->getResponseBody().size());
    int flips = 0;
    for (int bit = 0; bit < bits; ++bit) {
      if (bit % 8 >= 6) continue;  // the sums have six bits
      rig.sensor.setFault(eSimFault::FLIPPED_BIT, bit, "scan", 1);
      const std::uint64_t before = rig.sensor.getCounters().records;
      rig.oracle.follow(rig.face, [&] { return rig.sensor.getCounters().records >= before + 2; });
      ++flips;
    }
    EXPECT_TRUE(stopLeftScan(rig.face));
    rig.oracle.take(rig.face);
    const int sent = static_cast<int>(rig.sensor.getCounters().scans);
    EXPECT_LE(rig.oracle.truths, sent - flips / 2) << "of " << sent;
    EXPECT_GE(rig.oracle.truths, sent - flips - 30) << "of " << sent;
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
  const tDriver driver = openAny(eSimDialect::SCIP1, sensor.getPath());
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
  const std::string line(1 << 19, 'o');
  std::string body = line;
  for (std::size_t i = 63; i < body.size(); i += 64) body[i] = '\n';
  cFaultRig rig(paced());
  rig.scan();
  const std::size_t before = countAllocated();
  for (int piece = 0; piece < 18; ++piece) {  // a line of 8 MB and a body of 1 MB
    const std::uint64_t written = rig.sensor.getCounters().bytesWritten;
    rig.sensor.say(piece < 16 ? line : body);  // only so much may wait to leave
    ASSERT_TRUE(rig.sensor.waitFor(&cSimCounters::bytesWritten, written + line.size(), LONG_TIME));
    EXPECT_LE(countAllocated(), before + (1 << 20));
    rig.oracle.take(rig.face);
  }
  rig.sensor.say("\n\n");
  rig.oracle.expectTrueScan(rig.face);
  EXPECT_EQ(rig.oracle.lies, 0);
}

}  // namespace
