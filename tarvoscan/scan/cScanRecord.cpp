#include "tarvoscan/scan/cScanRecord.h"

#include <algorithm>
#include <cstring>

#include "tarvolink/tarvolink.h"

namespace tarvo {

namespace {

constexpr std::size_t LINE_SIZE = 64;  // characters of every line of data but the last
constexpr std::size_t CLOCK_SIZE = 4;

constexpr std::uint8_t FIRST_CHARACTER = 0x30;
constexpr std::uint8_t LAST_VALUE = 0x3F;

/// Whether all characters are of the code.
bool isEncoded(const char* text, std::size_t size) {
  std::uint8_t strays = 0;
  for (std::size_t i = 0; i < size; ++i) {
    const auto value =
        static_cast<std::uint8_t>(static_cast<std::uint8_t>(text[i]) - FIRST_CHARACTER);
    strays = static_cast<std::uint8_t>(strays | (value > LAST_VALUE ? 1 : 0));
  }
  return strays == 0;
}

bool hasGoodStatus(const std::string& status, bool isScip2) {
  constexpr std::string_view SCAN = "99";
  if (!isScip2) return status == "0";
  return status.size() == 3 && status.compare(0, 2, SCAN) == 0 &&
         status[2] == cSCIP2Comm::getSum(SCAN);
}

}  // namespace

cScanRecord::cScanRecord(const cScanRange& range)
    : range(range), data(range.getPoints() * static_cast<std::size_t>(range.width), '\0') {}

std::size_t cScanRecord::getBodySize(const cScanRange& range) {
  const std::size_t size = range.getPoints() * static_cast<std::size_t>(range.width);
  const std::size_t lines = (size + LINE_SIZE - 1) / LINE_SIZE;
  return range.isScip2 ? CLOCK_SIZE + 2 + size + 2 * lines : size + lines;
}

std::size_t cScanRecord::getSize(const cScanRange& range, std::size_t echoSize) {
  const std::size_t status = range.isScip2 ? 3 : 1;
  return echoSize + 1 + status + 1 + getBodySize(range) + 1;
}

bool cScanRecord::take(const cSCIPRecord& record, const std::string& echo,
                       std::vector<int>& distances, std::optional<std::uint32_t>& clock) {
  if (record.echo != echo || !hasGoodStatus(record.status, range.isScip2) ||
      record.body.size() != getBodySize(range)) {
    return false;
  }
  const char* at = record.body.data();
  if (range.isScip2 && !takeClock(at, clock)) return false;
  for (std::size_t done = 0; done < data.size(); done += LINE_SIZE) {
    if (!takeLine(at, std::min(LINE_SIZE, data.size() - done), &data[done])) return false;
  }
  distances.resize(range.getPoints());
  cSensorDriver::decode6bit(data.data(), data.size(), range.width, distances.data());
  return true;
}

bool cScanRecord::takeClock(const char*& at, std::optional<std::uint32_t>& clock) const {
  char text[CLOCK_SIZE];
  if (!takeLine(at, CLOCK_SIZE, text)) return false;
  int value = 0;
  cSensorDriver::decode6bit(text, CLOCK_SIZE, CLOCK_SIZE, &value);
  clock = static_cast<std::uint32_t>(value);
  return true;
}

/// Takes a line of `length` characters, its sum and its end.
bool cScanRecord::takeLine(const char*& at, std::size_t length, char* to) const {
  const char* const line = at;
  at += length;
  if (range.isScip2 && *at++ != cSCIP2Comm::getSum({line, length})) return false;
  if (*at++ != cTarvoLink::REC_EOL[0] || !isEncoded(line, length)) return false;
  std::memcpy(to, line, length);
  return true;
}

}  // namespace tarvo
