// What a line makes of the sensor's words.

#include "tests/faults/cChild.h"
#include "tests/support/cCaseName.h"

namespace {

enum eUndetected { NONE, SOME, MANY };

struct cRow {
  const char* name;
  eSimFault fault;
  int value;
  eUndetected wrong = NONE;   // wrong scans that sums and lengths of SCIP 2.0 cannot flag
  eUndetected wrong1 = NONE;  // that lengths alone cannot flag
};

using F = eSimFault;
const cRow ROWS[] = {
    // Catches:
    {"LostByte", F::LOST_BYTES, 1},      // a reading made of two halves
    {"Lost12Bytes", F::LOST_BYTES, 12},  // a hole of whole readings, the rest at other angles
    {"Lost66Bytes", F::LOST_BYTES, 66},  // a line less, with the sum of the next for its own
    {"LostEchoLineFeed", F::LOST_LINE_FEED, 0},        // a status looked for past the record's end
    {"LostDataLineFeed", F::LOST_LINE_FEED, 3},        // a line feed or sum taken for readings
    {"LostClosingLine", F::LOST_END, 0},               // two records taken for one scan
    {"DoubledStatus", F::DOUBLED_LINE, 1},             // a status taken for the time stamp
    {"DoubledData", F::DOUBLED_LINE, 3},               // 21 readings that nobody measured
    {"SwappedEchoAndStatus", F::SWAPPED_LINES, 0},     // a status that is no number: a crash
    {"SwappedData", F::SWAPPED_LINES, 3, MANY, MANY},  // a crash; that it is wrong, nothing flags
    {"Nul", F::FORCED_BYTE, 0, SOME, MANY},            // text that ends at a NUL
    {"EndOfFileByte", F::FORCED_BYTE, 0xFF, SOME, MANY},  // a byte taken for the end of all
    {"HighByte", F::FORCED_BYTE, 0x80, SOME, MANY},       // a table read below its begin
    {"EmptyStatus", F::EMPTY_STATUS, 0},                  // the first letter of no text
    {"CarriageReturns", F::CR_LF, 0},                  // an empty line not seen: no end of a record
    {"StatusWithLetter", F::STATUS, simStatus("0E")},  // "0E" read as 0: a refusal taken for good
    {"UnknownStatus", F::STATUS, 77},                  // a table of statuses read past its end
    {"OtherCommand", F::OTHER_ECHO, 0},                // an answer known by its tag or place alone
    {"OtherTag", F::OTHER_TAG, 1},           // in SCIP 2.0 an answer known by its letters alone
    {"ScanBetween", F::UNSOLICITED, 4},      // another program's scan taken for the answer
    {"LateAnswer", F::LATE, ANSWER + READ},  // in SCIP 2.0 an answer for an earlier command's taken
    {"EndlessBody", F::ENDLESS_BODY, 2000},  // a wait for an end that does not come
    {"OneReadingLess", F::WRONG_COUNT, -1},  // a last point that is the former scan's
    {"OneReadingMore", F::WRONG_COUNT, 1},   // a point beyond the last angle
    {"ThirtyReadingsMore", F::WRONG_COUNT, 30},  // a buffer for the points asked for overrun
};

/// One of the first few tries is 0: an answer that came late spoils the next exchange.
void expectSoon(const std::function<int()>& attempt) {
  for (int count = 0; count < 4; ++count)
    if (attempt() == 0) return;
  ADD_FAILURE() << "it does not recover";
}

/// Every record of a scan is damaged, and then each answer.
void damage(const cRow& row, cFaultRig& rig) {
  rig.scan();
  rig.sensor.setFault(row.fault, row.value, row.fault == F::LATE ? "answer" : "scan");
  const std::uint64_t before = rig.sensor.getCounters().records;
  const auto hasSent20 = [&] { return rig.sensor.getCounters().records >= before + 20; };
  rig.during("taking scans", 2000, [&] { rig.follow(hasSent20); });
  rig.sensor.setFault(row.fault, row.value, "answer");
  rig.during("a command", READ + ANSWER, [&] { rig.tryTo([&] { rig.face().fetchVersionStr(); }); });
  rig.sensor.clearFaults();
  rig.expectCorrectScan();
  EXPECT_TRUE(stopLeftScan(rig.face()));
}

/// SCIP 1.x asks for each scan, and only lengths flag what became of it.
void damageScip1(const cRow& row, cFaultRig& rig) {
  const auto scan = [&rig] { return rig.driver->getSCIP1IF()->doScan(FIRST, LAST, 1); };
  for (std::uint64_t count = 1; count <= 3; ++count) {
    rig.sensor.setFault(row.fault, row.value, "", 1);
    rig.during("a scan", 2 * READ, scan);
    rig.sensor.clearFaults();
    row.wrong1 == MANY ? rig.face().purgeScan() : rig.take();
    EXPECT_TRUE(row.fault != F::LATE || rig.sensor.waitForSentScans(count, LONG_TIME));
  }
  expectSoon(scan);
}

class Content : public testing::TestWithParam<cRow> {};

TEST_P(Content, IsHandledWhenDamaged) {
  inBothDialects([&row = GetParam()](eSimDialect dialect) {
    cFaultRig rig(turning(50, dialect));
    (dialect == SCIP1 ? damageScip1 : damage)(row, rig);
    expectSoon([&] { return rig.face().fetchVersionStr(); });
    const eUndetected most = dialect == SCIP1 ? row.wrong1 : row.wrong;
    const int count = rig.correct + rig.flagged + rig.wrong;
    EXPECT_TRUE(most == MANY || rig.wrong <= (most == SOME ? count / 4 : 0))
        << rig.wrong << " wrong scans of " << count;
  });
}

INSTANTIATE_TEST_SUITE_P(Records, Content, testing::ValuesIn(ROWS), cCaseName());

}  // namespace
