// What a line makes of the sensor's words.

#include <atomic>
#include <sstream>

#include "tests/faults/cChild.h"
#include "tests/support/cCaseName.h"

namespace {

/// One of the first few tries is 0: an answer that came late spoils the next exchange.
void expectSoon(const std::function<int()>& attempt) {
  for (int count = 0; count < 4; ++count)
    if (attempt() == 0) return;
  ADD_FAILURE() << "it does not recover";
}

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
const cRow ROWS[] = {
    // Would catch:
    {"LostByte", F::LOST_BYTES, 1},      // a reading made of two halves
    {"Lost12Bytes", F::LOST_BYTES, 12},  // a hole of whole readings, the rest at other angles
    {"Lost66Bytes", F::LOST_BYTES, 66},  // a line less, with the sum of the next for its own
    {"LostEchoLineFeed", F::LOST_LINE_FEED, 0},        // a status looked for past the record's end
    {"LostDataLineFeed", F::LOST_LINE_FEED, 3},        // a line feed or sum taken for readings
    {"LostClosingLine", F::LOST_END, 0},               // two records taken for one scan
    {"DoubledStatus", F::DOUBLED_LINE, 1},             // a status taken for the time stamp
    {"DoubledData", F::DOUBLED_LINE, 3},               // 21 readings that nobody measured
    {"SwappedEchoAndStatus", F::SWAPPED_LINES, 0},     // a status that is no number: a crash
    {"SwappedData", F::SWAPPED_LINES, 3, MANY, MANY},  // a crash; that it is a lie, nothing tells
    {"Nul", F::FORCED_BYTE, 0, SOME, MANY},            // text that ends at a NUL
    {"EndOfFileByte", F::FORCED_BYTE, 0xFF, SOME, MANY},  // a byte taken for the end of all
    {"HighByte", F::FORCED_BYTE, 0x80, SOME, MANY},       // a table read below its begin
    {"EmptyStatus", F::EMPTY_STATUS, 0},                  // the first letter of no text
    {"CarriageReturns", F::CR_LF, 0},                  // an empty line not seen: no end of a record
    {"StatusWithLetter", F::STATUS, simStatus("0E")},  // "0E" read as 0: a refusal taken for good
    {"UnknownStatus", F::STATUS, 77},                  // a table of statuses read past its end
    {"OtherCommand", F::OTHER_ECHO, 0},                // an answer told by its tag or place alone
    {"OtherTag", F::OTHER_TAG, 1},           // in SCIP 2.0 an answer told by its letters alone
    {"ScanBetween", F::UNSOLICITED, 4},      // another program's scan taken for the answer
    {"LateAnswer", F::LATE, ANSWER + READ},  // in SCIP 2.0 an answer for an earlier command's taken
    {"EndlessBody", F::ENDLESS_BODY, 2000},  // a wait for an end that does not come
    {"OneReadingLess", F::WRONG_COUNT, -1},  // a last point that is the former scan's
    {"OneReadingMore", F::WRONG_COUNT, 1},   // a point beyond the last angle
    {"ThirtyReadingsMore", F::WRONG_COUNT, 30},  // a buffer for the points asked for overrun
};

/// Every record of a scan is harmed, and then each answer.
void harm(const cRow& row, cFaultRig& rig) {
  rig.scan();
  rig.sensor.setFault(row.fault, row.value, row.fault == F::LATE ? "answer" : "scan");
  const std::uint64_t before = rig.sensor.getCounters().records;
  const auto hasSent20 = [&] { return rig.sensor.getCounters().records >= before + 20; };
  rig.during("taking scans", 2000, [&] { rig.follow(hasSent20); });
  rig.sensor.setFault(row.fault, row.value, "answer");
  rig.during("a command", READ + ANSWER, [&] { rig.tryTo([&] { rig.face().fetchVersionStr(); }); });
  rig.sensor.clearFaults();
  rig.expectTrueScan();
  EXPECT_TRUE(stopLeftScan(rig.face()));
}

/// SCIP 1.x asks for each scan, and only lengths tell what became of it.
void harmScip1(const cRow& row, cFaultRig& rig) {
  const auto scan = [&rig] { return rig.driver->getSCIP1IF()->doScan(FIRST, LAST, 1); };
  for (std::uint64_t count = 1; count <= 3; ++count) {
    rig.sensor.setFault(row.fault, row.value, "", 1);
    rig.during("a scan", 2 * READ, scan);
    rig.sensor.clearFaults();
    row.lies1 == MANY ? rig.drop() : rig.take();
    EXPECT_TRUE(row.fault != F::LATE || rig.sensor.waitForSentScans(count, LONG_TIME));
  }
  expectSoon(scan);
}

class cContent : public testing::TestWithParam<cRow> {};

TEST_P(cContent, IsBorne) {
  inBothDialects([&row = GetParam()](eSimDialect dialect) {
    cOpenRig rig(paced(dialect));
    (dialect == SCIP1 ? harmScip1 : harm)(row, rig);
    expectSoon([&] { return rig.face().fetchVersionStr(); });
    const eLies most = dialect == SCIP1 ? row.lies1 : row.lies;
    const int count = rig.truths + rig.told + rig.lies;
    EXPECT_TRUE(most == MANY || rig.lies <= (most == SOME ? count / 4 : 0))
        << rig.lies << " lies of " << count;
  });
}

INSTANTIATE_TEST_SUITE_P(Records, cContent, testing::ValuesIn(ROWS), cCaseName());

// --- each bit of one record --------------------------------------------------------------

constexpr std::uint64_t LONGEST = 400;  // bytes of a record here

struct cKind {
  const char* name;
  std::string harmed;  // a running scan or the answer of that name
  eSimDialect dialect;
  int (*ask)(cFaultRig&);  // 0: something came that was taken for good
};

int takeOne(cFaultRig& rig) { return rig.driver->getSCIP1IF()->doScan(FIRST, LAST, 1); }

/// Two more of a scan without end: a flipped bit costs no more.
int takeTwo(cFaultRig& rig, int most) {
  if (!rig.face().isScanning()) rig.scan(0, most);
  const std::uint64_t before = rig.sensor.getCounters().records;
  rig.follow([&] { return rig.sensor.getCounters().records >= before + 2; });
  rig.expectTrueScan();
  return 0;
}

const cKind KINDS[] = {
    // Would catch: a name, a number of steps or a status that the sensor has not;
    {"VV", "VV", SCIP2, [](cFaultRig& rig) { return rig.face().fetchVersionStr(); }},
    {"PP", "PP", SCIP2, [](cFaultRig& rig) { return rig.face().fetchParameters(); }},
    {"II", "II", SCIP2, [](cFaultRig& rig) { return rig.face().updateStatus(); }},
    // a stored scan's sums not tested, of three and of two characters a reading;
    {"GD", "GD", SCIP2,
     [](cFaultRig& rig) { return rig.face().getStoredScan(FIRST, LAST, 1, FAR); }},
    {"GS", "GS", SCIP2, takeOne},
    // the same while scans go on, or a scan that ends with one bad record;
    {"MD", "scan", SCIP2, [](cFaultRig& rig) { return takeTwo(rig, FAR); }},
    {"MS", "scan", SCIP2, [](cFaultRig& rig) { return takeTwo(rig, NEAR); }},
    // a crash where nothing but a status comes; lengths and line ends of SCIP 1.x not looked at.
    {"QT", "QT", SCIP2, [](cFaultRig& rig) { return rig.face().stopAll(); }},
    {"V", "V", SCIP1, [](cFaultRig& rig) { return rig.face().fetchVersionStr(); }},
    {"G", "G", SCIP1, takeOne},
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

class cFlippedBit : public testing::TestWithParam<cKind> {};

// Would catch: a sum that is not tested, or not over all of its line; a crash on what is no number;
// a scan of SCIP 1.x of another length. Nothing tells the rest there.
TEST_P(cFlippedBit, IsToldUnlessTheSumCannot) {
  const cKind& kind = GetParam();
  const bool isScip1 = kind.dialect == SCIP1;
  std::atomic<cSimSensor*> itself{nullptr};
  cSimSetting setting = paced(kind.dialect, kind.harmed == kind.name ? 0 : 1000);
  // An answer that nobody knows any more costs no time-out: another follows, or all ends.
  setting.onCommand = [&](const std::string& line) {
    if (cSimSensor* const sensor = itself)
      sensor->say(isScip1 ? "\n\n" : "\n\n" + line + "\n99b\n\n");
  };
  cOpenRig rig(setting);
  ASSERT_EQ(rig.face().startStoringScan(), 0);
  ASSERT_EQ(kind.ask(rig), 0);
  const std::uint64_t before = rig.sensor.getCounters().bytesWritten;
  ASSERT_EQ(kind.ask(rig), 0);
  const std::uint64_t bytes = rig.sensor.getCounters().bytesWritten - before;
  const int bits = 8 * static_cast<int>(std::min(bytes, LONGEST));
  rig.take();
  const std::string clean = describe(*rig.driver);
  itself = &rig.sensor;
  for (int bit = 0; bit < bits; ++bit) {
    const bool isSeen = bit % 8 < 6 && !isScip1;       // the sums of SCIP 2.0 have six bits
    if (!isSeen && rig.face().isScanning()) continue;  // when its lie comes, none can tell
    rig.sensor.setFault(eSimFault::FLIPPED_BIT, bit, kind.harmed, 1);
    const int lies = rig.lies;
    rig.tryTo([&] { kind.ask(rig); });
    rig.tryTo([&] { isSeen ? rig.take() : rig.drop(); });
    const bool isSame = describe(*rig.driver) == clean;
    ASSERT_TRUE((isSame && rig.lies == lies) || !isSeen) << "bit " << bit;
    ASSERT_TRUE(isSame || kind.ask(rig) == 0);
    ASSERT_TRUE(!isScip1 || rig.told == 0) << "bit " << bit;
  }
  // So these harm a scan that nobody compares, and another follows.
  for (int bit = 6; bit < bits && kind.harmed == "scan"; bit += bit % 8 == 6 ? 1 : 7) {
    const std::uint64_t sent = rig.sensor.getCounters().records;
    rig.sensor.setFault(eSimFault::FLIPPED_BIT, bit, kind.harmed, 1);
    ASSERT_TRUE(rig.sensor.waitFor(&cSimCounters::records, sent + 2, LONG_TIME));
    rig.tryTo([&] { rig.drop(); });
  }
  while (kind.harmed == "scan" && rig.face().isScanning())
    rig.tryTo([&] { rig.face().abortScan(); });
  rig.tryTo([&] { rig.drop(); });
  expectSoon([&] { return kind.ask(rig); });
}

INSTANTIATE_TEST_SUITE_P(Kinds, cFlippedBit, testing::ValuesIn(KINDS), cCaseName());

// --- no end ------------------------------------------------------------------------------

// Would catch: memory that grows with what a line that babbles says.
TEST(cEndless, CostsNoMemory) {
  const std::string line(1 << 19, 'o');
  std::string body = line;
  for (std::size_t i = 63; i < body.size(); i += 64) body[i] = '\n';
  cOpenRig rig(paced());
  rig.scan();
  const std::size_t before = countAllocated();
  for (int piece = 0; piece < 18; ++piece) {  // a line of 8 MB and a body of 1 MB
    const std::uint64_t written = rig.sensor.getCounters().bytesWritten;
    rig.sensor.say(piece < 16 ? line : body);  // only so much may wait to leave
    ASSERT_TRUE(rig.sensor.waitFor(&cSimCounters::bytesWritten, written + line.size(), LONG_TIME));
    EXPECT_LE(countAllocated(), before + (1 << 20));
    rig.take();
  }
  rig.sensor.say("\n\n");
  rig.expectTrueScan();
  EXPECT_EQ(rig.lies, 0);
}

}  // namespace
