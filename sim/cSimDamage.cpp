#include "sim/cSimDamage.h"

#include <algorithm>
#include <string>
#include <vector>

#include "sim/cSimCode.h"

namespace {

using cLines = std::vector<std::string>;

constexpr int MAX_VALUE = 1 << 20;  // lines or readings; a bound for arithmetic with a user's value

/// The record's lines without their ends; the closing empty line is the last one.
cLines split(const std::string& bytes) {
  cLines lines;
  for (std::size_t at = 0; at < bytes.size();) {
    const std::size_t end = std::min(bytes.find('\n', at), bytes.size());
    lines.push_back(bytes.substr(at, end - at));
    at = end + 1;
  }
  return lines;
}

std::string joined(const cLines& lines) {
  std::string bytes;
  for (const std::string& line : lines) bytes += line + '\n';
  return bytes;
}

/// The line with that number: from 0 at the front, from -1 at the last line before the closing one.
/// lines.end() if there is none.
cLines::iterator lineAt(cLines& lines, int value) {
  const int count = static_cast<int>(lines.size());
  const int index = value < 0 ? count - 1 + value : value;
  return index >= 0 && index < count ? lines.begin() + index : lines.end();
}

std::string noise(std::size_t count, cSimRandom& random) {
  std::string bytes;
  for (std::size_t i = 0; i < count; ++i) bytes += static_cast<char>(random.below(256));
  return bytes;
}

std::size_t sizeOf(int value) { return static_cast<std::size_t>(std::max(value, 0)); }

std::string garbage(const std::string& bytes, int value, cSimRandom& random) {
  return noise(sizeOf(value), random) + bytes;
}

std::string forcedByte(const std::string& record, int value, cSimRandom& random) {
  std::string bytes = record;
  if (!bytes.empty()) bytes[random.below(bytes.size())] = static_cast<char>(value);
  return bytes;
}

// Any value names a bit, so that a caller can flip every bit of a record without knowing its
// length.
std::string flippedBit(const std::string& record, int value, cSimRandom&) {
  std::string bytes = record;
  if (bytes.empty()) return bytes;
  char& byte = bytes[sizeOf(value) / 8 % bytes.size()];
  byte = static_cast<char>(byte ^ (1 << (sizeOf(value) % 8)));
  return bytes;
}

std::string lostBytes(const std::string& record, int value, cSimRandom& random) {
  std::string bytes = record;
  const std::size_t count = std::min(sizeOf(value), bytes.size());
  return bytes.erase(random.below(bytes.size() - count + 1), count);
}

// Line 0 is the status here: the echo has no sum.
std::string wrongSum(const std::string& bytes, int value, cSimRandom&) {
  cLines lines = split(bytes);
  const auto line = lineAt(lines, value < 0 ? value : std::min(value, MAX_VALUE) + 1);
  // The next letter of the sum's alphabet, 0x30 to 0x6F: wrong, but not impossible.
  if (line != lines.end() && !line->empty())
    line->back() = static_cast<char>((line->back() - 0x30 + 1) % 64 + 0x30);
  return joined(lines);
}

std::string cutShort(const std::string& bytes, int value, cSimRandom&) {
  return bytes.substr(0, value > 0 ? sizeOf(value) : bytes.size() / 2);
}

std::string lostLineFeed(const std::string& record, int value, cSimRandom&) {
  std::string bytes = record;
  std::size_t place = bytes.find('\n');
  for (int i = 0; i < value && place != std::string::npos; ++i) place = bytes.find('\n', place + 1);
  return place == std::string::npos ? bytes : bytes.erase(place, 1);
}

std::string lostLine(const std::string& bytes, int value, cSimRandom&) {
  cLines lines = split(bytes);
  const auto line = lineAt(lines, value);
  if (line != lines.end()) lines.erase(line);
  return joined(lines);
}

std::string lostEnd(const std::string& bytes, int, cSimRandom&) {
  return bytes.substr(0, bytes.size() - 1);
}

std::string doubledLine(const std::string& bytes, int value, cSimRandom&) {
  cLines lines = split(bytes);
  const auto line = lineAt(lines, value);
  if (line != lines.end()) {
    const std::string copy = *line;  // insert may move what `line` refers to
    lines.insert(line, copy);
  }
  return joined(lines);
}

std::string swappedLines(const std::string& bytes, int value, cSimRandom&) {
  cLines lines = split(bytes);
  const auto line = lineAt(lines, value);
  if (line != lines.end() && line + 1 != lines.end()) line->swap(*(line + 1));
  return joined(lines);
}

/// The record with another status line.
std::string withStatus(const std::string& bytes, const std::string& status) {
  cLines lines = split(bytes);
  if (lines.size() > 1) lines[1] = status;
  return joined(lines);
}

std::string emptyStatus(const std::string& bytes, int, cSimRandom&) {
  return withStatus(bytes, "");
}

std::string crLf(const std::string& bytes, int, cSimRandom&) {
  std::string text;
  for (char c : bytes) text += c == '\n' ? std::string("\r\n") : std::string(1, c);
  return text;
}

// The sum is right, so that the status itself has to be noticed. SCIP 1.x has one digit and no sum.
std::string otherStatus(const std::string& bytes, int value, cSimRandom&) {
  const bool packed = value > 99;  // by simStatus
  const char two[] = {static_cast<char>(packed ? value / 256 : '0' + value / 10),
                      static_cast<char>(packed ? value % 256 : '0' + value % 10)};
  const cLines lines = split(bytes);
  const bool scip1 = lines.size() > 1 && lines[1].size() == 1;
  if (scip1) return withStatus(bytes, std::string(1, two[1]));
  const std::string status(two, 2);
  return withStatus(bytes, status + cSimCode::sum(status));
}

std::string otherEcho(const std::string& record, int, cSimRandom&) {
  std::string bytes = record;
  const std::size_t echo = std::min(bytes.find('\n'), bytes.size());
  return bytes.replace(0, std::min<std::size_t>(echo, 2), "XX");
}

std::string otherTag(const std::string& bytes, int value, cSimRandom&) {
  cLines lines = split(bytes);
  const std::size_t tag = lines.empty() ? std::string::npos : lines[0].find(';');
  if (tag == std::string::npos) return bytes;
  const long number = std::strtol(lines[0].c_str() + tag + 1, nullptr, 10);
  lines[0] = lines[0].substr(0, tag + 1) + std::to_string(number + value);
  return joined(lines);
}

// The data are joined, resized and cut into lines again: sums and line lengths stay right, so that
// only the number of readings is wrong. Works on any record whose data follow echo, status and, in
// SCIP 2.0, the time.
std::string wrongCount(const std::string& bytes, int value, cSimRandom&) {
  cLines lines = split(bytes);
  const bool sums = lines.size() > 1 && lines[1].size() == 3;
  const std::size_t head = sums ? 3 : 2;
  if (lines.size() <= head + 1) return bytes;
  std::string data;
  for (auto line = lines.begin() + static_cast<std::ptrdiff_t>(head); line + 1 != lines.end();
       ++line)
    data += line->substr(0, line->size() - (sums ? 1 : 0));
  const int width = lines[0].size() > 1 && lines[0][1] == 'D' ? 3 : 2;
  data.resize(
      sizeOf(static_cast<int>(data.size()) + std::clamp(value, -MAX_VALUE, MAX_VALUE) * width),
      '0');
  lines.resize(head);
  return joined(lines) + cSimCode::dataLines(data, sums) + '\n';
}

// What another program left running looks like, to a driver that has just opened the port.
std::string unsolicited(const std::string& bytes, int value, cSimRandom& random) {
  const auto clock = static_cast<unsigned>(random.below(1 << 24));
  const std::string echo = "MD0000000101000;" + std::to_string(value) + "\n";
  const std::string data = cSimCode::withSum(cSimCode::encode({1000, 2000}, 3));
  return echo + cSimCode::withSum("99") + cSimCode::withSum(cSimCode::encode(clock, 4)) + data +
         "\n" + bytes;
}

// Endless, but finite: a host that never gives up would otherwise fill the outbox.
std::string endlessLine(const std::string&, int value, cSimRandom&) {
  return std::string(sizeOf(value), 'o');
}

std::string endlessBody(const std::string& bytes, int value, cSimRandom&) {
  const std::string line = cSimCode::withSum(std::string(cSimCode::LINE, 'o'));
  cLines lines = split(bytes);
  lines.resize(std::min<std::size_t>(lines.size(), 2));
  std::string text = joined(lines);
  const std::size_t size = text.size() + sizeOf(value);
  while (text.size() < size) text += line;
  return text;
}

struct cDamage {
  eSimFault fault;
  std::string (*corrupt)(const std::string& bytes, int value, cSimRandom& random);
};

using F = eSimFault;
const cDamage DAMAGES[] = {{F::GARBAGE, garbage},
                           {F::FORCED_BYTE, forcedByte},
                           {F::FLIPPED_BIT, flippedBit},
                           {F::LOST_BYTES, lostBytes},
                           {F::WRONG_SUM, wrongSum},
                           {F::CUT_SHORT, cutShort},
                           {F::LOST_LINE_FEED, lostLineFeed},
                           {F::LOST_LINE, lostLine},
                           {F::LOST_END, lostEnd},
                           {F::DOUBLED_LINE, doubledLine},
                           {F::SWAPPED_LINES, swappedLines},
                           {F::EMPTY_STATUS, emptyStatus},
                           {F::CR_LF, crLf},
                           {F::STATUS, otherStatus},
                           {F::OTHER_ECHO, otherEcho},
                           {F::OTHER_TAG, otherTag},
                           {F::WRONG_COUNT, wrongCount},
                           {F::UNSOLICITED, unsolicited},
                           {F::ENDLESS_LINE, endlessLine},
                           {F::ENDLESS_BODY, endlessBody}};

/// Whether a record with this fault has no end, so that its scan does not count as sent.
bool cutsShort(eSimFault fault) {
  return fault == F::CUT_SHORT || fault == F::ENDLESS_LINE || fault == F::ENDLESS_BODY;
}

}  // namespace

void cSimDamage::apply(cSimRecord& record) {
  // A target is compared with the original record, whatever an earlier fault made of it.
  const cSimRecord original = record;
  for (const cDamage& damage : DAMAGES) {
    const auto value = faults.consume(damage.fault, original);
    if (!value) continue;
    record.bytes = damage.corrupt(record.bytes, *value, random);
    record.cut = record.cut || cutsShort(damage.fault);
  }
}
