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
    // Would catch: a scan with a hole, half a line that is read past its end.
    {"LostByte", F::LOST_BYTES, 1},
    {"Lost12Bytes", F::LOST_BYTES, 12},
    {"Lost66Bytes", F::LOST_BYTES, 66},
    // Would catch: two lines taken for one, a record whose end is looked for in the next.
    {"LostEchoLineFeed", F::LOST_LINE_FEED, 0},
    {"LostDataLineFeed", F::LOST_LINE_FEED, 3},
    {"LostClosingLine", F::LOST_END, 0},
    // Would catch: lines told by their place alone.
    {"DoubledStatus", F::DOUBLED_LINE, 1},
    {"DoubledData", F::DOUBLED_LINE, 3},
    {"SwappedEchoAndStatus", F::SWAPPED_LINES, 0},
    {"SwappedData", F::SWAPPED_LINES, 3, MANY, MANY},
    // Would catch: text that ends at a NUL, a byte taken for the end of all or for a number below
    // 0.
    {"Nul", F::FORCED_BYTE, 0, SOME, MANY},
    {"EndOfFileByte", F::FORCED_BYTE, 0xFF, SOME, MANY},
    {"HighByte", F::FORCED_BYTE, 0x80, SOME, MANY},
    // Would catch: a crash on a status that is not there or no number, or one taken for good.
    {"EmptyStatus", F::EMPTY_STATUS, 0},
    {"CarriageReturns", F::CR_LF, 0},
    {"StatusWithLetter", F::STATUS, simStatus("0E")},
    {"UnknownStatus", F::STATUS, 77},
    // Would catch: an answer taken for another's.
    {"OtherCommand", F::OTHER_ECHO, 0},
    {"OtherTag", F::OTHER_TAG, 1},
    {"ScanBetween", F::UNSOLICITED, 4},
    {"LateAnswer", F::LATE, ANSWER + READ},
    // Would catch: a wait for an end that does not come.
    {"EndlessBody", F::ENDLESS_BODY, 2000},
    // Would catch: points that nobody measured, or a reading before the first or after the last.
    {"OneReadingLess", F::WRONG_COUNT, -1},
    {"OneReadingMore", F::WRONG_COUNT, 1},
    {"ThirtyReadingsMore", F::WRONG_COUNT, 30},
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
    {"VV", "VV", SCIP2, [](cFaultRig& rig) { return rig.face().fetchVersionStr(); }},
    {"PP", "PP", SCIP2, [](cFaultRig& rig) { return rig.face().fetchParameters(); }},
    {"II", "II", SCIP2, [](cFaultRig& rig) { return rig.face().updateStatus(); }},
    {"GD", "GD", SCIP2,
     [](cFaultRig& rig) { return rig.face().getStoredScan(FIRST, LAST, 1, FAR); }},
    {"GS", "GS", SCIP2, takeOne},
    {"MD", "scan", SCIP2, [](cFaultRig& rig) { return takeTwo(rig, FAR); }},
    {"MS", "scan", SCIP2, [](cFaultRig& rig) { return takeTwo(rig, NEAR); }},
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
