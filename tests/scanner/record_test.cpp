// The tests that a scan has to pass, on records in memory.

#include <sstream>

#include "tarvolink/scip/cSCIPRecordReader.h"
#include "tarvoscan/scan/cScanRecord.h"
#include "tests/support/cScriptedSensor.h"

using namespace tarvo;

namespace {

cScanRange rangeOf(bool isScip2, int width, int points) {
  cScanRange range;
  range.isScip2 = isScip2;
  range.width = width;
  range.lastStep = points - 1;
  range.maxDistance = width == 3 ? 5600 : 4095;
  return range;
}

/// The characters of `points` distances, in lines of 64.
std::string dataOf(const cScanRange& range) {
  std::string data, lines;
  for (std::size_t i = 0; i < range.getPoints() * static_cast<std::size_t>(range.width); ++i) {
    data += static_cast<char>('0' + (i * 37 + 5) % 64);
  }
  for (std::size_t at = 0; at < data.size(); at += 64) {
    const std::string line = data.substr(at, 64);
    lines += (range.isScip2 ? summed(line) : line) + "\n";
  }
  return lines;
}

std::string recordOf(const cScanRange& range, const std::string& echo) {
  if (!range.isScip2) return echo + "\n0\n" + dataOf(range) + "\n";
  return echo + "\n" + summed("99") + "\n" + summed("0m2A") + "\n" + dataOf(range) + "\n";
}

struct cTaken {
  bool isGood;
  std::vector<int> distances;
  std::optional<std::uint32_t> clock;
};

/// What is made of the first record in `text`; what follows it on the line is another one.
cTaken take(const cScanRange& range, const std::string& text, const std::string& echo) {
  std::istringstream stream(text + text);
  cSCIPRecord record;
  cTaken taken{};
  cScanRecord decoder(range);
  taken.isGood = cSCIPRecordReader(stream).read(record) &&
                 decoder.take(record, echo, taken.distances, taken.clock);
  return taken;
}

/// Of all records with one bit flipped, the share that passes.
double shareThatPasses(const cScanRange& range) {
  const std::string echo = range.getCommand(false) + (range.isScip2 ? ";12" : "");
  const std::string whole = recordOf(range, echo);
  EXPECT_TRUE(take(range, whole, echo).isGood);
  int passed = 0;
  for (std::size_t bit = 0; bit < 8 * whole.size(); ++bit) {
    std::string flipped = whole;
    flipped[bit / 8] = static_cast<char>(flipped[bit / 8] ^ 1 << bit % 8);
    if (take(range, flipped, echo).isGood) ++passed;
  }
  return passed / (8.0 * static_cast<double>(whole.size()));
}

}  // namespace

// Catches: a scan handed out although one bit of its record was flipped on the line.
TEST(ScanRecord, NoFlippedBitPassesInScip2) {
  for (const int width : {2, 3}) {
    for (const int points : {1, 21, 22, 43, 64, 107}) {
      EXPECT_EQ(shareThatPasses(rangeOf(true, width, points)), 0) << points << " points";
    }
  }
}

// Catches: a test of SCIP 1.x records that is weaker than docs/reliability.md has it.
TEST(ScanRecord, ThreeOfFiveFlippedBitsPassInScip1) {
  EXPECT_LT(shareThatPasses(rangeOf(false, 2, 681)), 0.62);
  EXPECT_LT(shareThatPasses(rangeOf(false, 3, 681)), 0.62);
}

// Catches: a distance or the clock decoded wrongly, or torn where it runs over a line's end; a
// record of another command, tag, status or length taken for the scan.
TEST(ScanRecord, TakesWhatWasAskedForAlone) {
  const cScanRange range = rangeOf(true, 3, 2);
  const std::string echo = "MD0000000101000;5";
  const cTaken taken =
      take(range, echo + "\n99b\n" + summed("0010") + "\n" + summed("1Dhm2@") + "\n\n", echo);
  EXPECT_TRUE(taken.isGood);
  EXPECT_EQ(taken.distances, (std::vector<int>{5432, 250000}));
  EXPECT_EQ(taken.clock, 64U);
  for (const char* other : {"MD0000000101000;6", "MS0000000101000;5", "MD0000000101000"}) {
    EXPECT_FALSE(take(range, recordOf(range, echo), other).isGood) << other;
  }
  for (const int points : {1, 3, 23}) {
    EXPECT_FALSE(take(rangeOf(true, 3, points), recordOf(range, echo), echo).isGood) << points;
  }
  EXPECT_FALSE(take(range, recordOf(range, echo).replace(echo.size() + 1, 3, "00P"), echo).isGood);
}
