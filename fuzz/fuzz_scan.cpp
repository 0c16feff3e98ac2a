// The scanner's test of a scan: whatever passes it says what its distances say, character for
// character. The first bytes of the input choose the form and the number of points; what follows is
// the record behind its echo.

#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>

#include "tarvolink/scip/cSCIPRecordReader.h"
#include "tarvolink/scip/cTarvoLink.h"
#include "tarvoscan/scan/cScanRecord.h"

namespace {

constexpr std::size_t HEADER_SIZE = 3;

void expect(bool condition) {
  if (!condition) std::abort();
}

tarvo::cScanRange rangeOf(const std::uint8_t* header) {
  tarvo::cScanRange range;
  range.isScip2 = header[0] % 2 == 0;
  range.width = header[0] % 4 < 2 ? 2 : 3;
  range.cluster = 1 + header[0] / 4;
  range.lastStep = header[1] + 256 * (header[2] % 8);
  return range;
}

/// The characters that stand for a number on the wire.
std::string encode(int value, int width) {
  std::string text;
  for (int i = width - 1; i >= 0; --i) text += static_cast<char>('0' + (value >> 6 * i) % 64);
  return text;
}

/// The body's lines in one, without the sums and the sensor's clock.
std::string dataOf(const std::string& body, bool isScip2) {
  std::string data;
  std::istringstream lines(body);
  std::string line;
  if (isScip2) std::getline(lines, line);
  while (std::getline(lines, line)) data += isScip2 ? line.substr(0, line.size() - 1) : line;
  return data;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  if (size < HEADER_SIZE) return 0;
  const tarvo::cScanRange range = rangeOf(bytes);
  const std::string echo = range.isScip2 ? "MD0000108001000;1" : "G00072501";
  std::istringstream stream(
      echo + "\n" +
      std::string(reinterpret_cast<const char*>(bytes) + HEADER_SIZE, size - HEADER_SIZE));
  cSCIPRecord record;
  cSCIPRecordReader(stream).read(record);
  std::vector<int> distances;
  std::optional<std::uint32_t> clock;
  if (!tarvo::cScanRecord(range).take(record, echo, distances, clock)) return 0;
  expect(distances.size() == range.getPoints());
  expect(clock.has_value() == range.isScip2);
  std::string data;
  for (const int distance : distances) data += encode(distance, range.width);
  expect(data == dataOf(record.body, range.isScip2));
  return 0;
}
