#include "sim/eSimFault.h"

#include <stdexcept>

const std::vector<cSimFaultInfo>& simFaultTable() {
  using F = eSimFault;
  static const std::vector<cSimFaultInfo> TABLE = {
      {F::GARBAGE, "garbage", 16, "VALUE random bytes precede each record"},
      {F::FORCED_BYTE, "forced-byte", 0, "one byte of each record becomes VALUE (0..255)"},
      {F::FLIPPED_BIT, "flipped-bit", 0, "bit VALUE of each record is flipped"},
      {F::LOST_BYTES, "lost-bytes", 1, "VALUE consecutive bytes of each record are lost"},
      {F::WRONG_SUM, "wrong-sum", 0, "the sum of line VALUE is wrong (0: the status)"},
      {F::CUT_SHORT, "cut-short", 0, "each record ends after VALUE bytes (0: half of it)"},
      {F::LOST_LINE_FEED, "lost-line-feed", 0, "line feed VALUE is lost (0: the echo's)"},
      {F::LOST_LINE, "lost-line", -1, "line VALUE is lost (0: the echo, -1: the last)"},
      {F::LOST_END, "lost-end", 0, "the closing empty line is lost"},
      {F::DOUBLED_LINE, "doubled-line", -1, "line VALUE is sent twice (0: the echo, -1: the last)"},
      {F::SWAPPED_LINES, "swapped-lines", 0, "line VALUE and the next are swapped (0: the echo)"},
      {F::EMPTY_STATUS, "empty-status", 0, "the status line is empty"},
      {F::CR_LF, "cr-lf", 0, "lines end in CR LF"},
      {F::STATUS, "status", simStatus("0E"), "the status is VALUE: a number or two characters"},
      {F::OTHER_ECHO, "other-echo", 0, "the echo names another command"},
      {F::OTHER_TAG, "other-tag", 1, "VALUE is added to a decimal host string"},
      {F::WRONG_COUNT, "wrong-count", -1, "scans have VALUE more readings (fewer, below 0)"},
      {F::UNSOLICITED, "unsolicited", 4, "a scan that nobody requested first (host string VALUE)"},
      {F::ENDLESS_LINE, "endless-line", 1 << 16, "VALUE bytes with no line feed replace a record"},
      {F::ENDLESS_BODY, "endless-body", 1 << 16, "VALUE bytes of lines follow each status"},
      {F::STALL, "stall", 0, "obeys commands but sends nothing"},
      {F::LATE, "late", 300, "answers come VALUE ms late"},
      {F::NO_ANSWER, "no-answer", 0, "commands are obeyed but not answered"},
      {F::BYTE_BY_BYTE, "byte-by-byte", 200, "bytes come singly, VALUE us apart"},
      {F::SPLIT, "split", 1, "each record comes in two writes, the first of VALUE bytes"},
      {F::SPLIT_PAUSE, "split-pause", 10, "VALUE ms between the two writes of split"},
      {F::BURSTS, "bursts", 16, "bytes leave only at multiples of VALUE ms"},
      {F::UNPLUGGED, "unplugged", 0, "the cable is pulled"}};
  return TABLE;
}

std::optional<eSimFault> simFaultByName(const std::string& name) {
  for (const cSimFaultInfo& row : simFaultTable())
    if (name == row.name) return row.fault;
  return std::nullopt;
}

int simStatus(const std::string& twoCharacters) {
  if (twoCharacters.size() != 2)
    throw std::invalid_argument("simStatus: a status has two characters, not \"" + twoCharacters +
                                "\"");
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(twoCharacters[i]); };
  // Printable characters give more than 99, so that no packed status is taken for a number.
  return byte(0) * 256 + byte(1);
}
