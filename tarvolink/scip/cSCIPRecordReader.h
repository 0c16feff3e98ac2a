#pragma once

#include <array>
#include <cstddef>
#include <istream>
#include <string_view>

#include "tarvolink/scip/cSCIPRecord.h"

/// Reads one response from a stream: echo line, status line, body lines, empty line.
///
/// It knows no device and no thread, so any stream will do. A read fails when the stream ends
/// before the first character of a line. Characters followed by the stream's end count as a line,
/// and the next read of that response fails at once. A carriage return is an ordinary character.
/// One caller at a time.
class cSCIPRecordReader {
 public:
  /// Characters of the longest line that is read; a longer one fails the read.
  static constexpr std::size_t LINE_LIMIT = 4096;
  /// Characters of the longest response, including skipped empty lines; more fail the read.
  static constexpr std::size_t RECORD_LIMIT = 65536;

  /// A reader of one response from `stream`, which must outlive it.
  explicit cSCIPRecordReader(std::istream& stream) : stream(stream) {}

  /// Fills `record`, except `command`, and `time` until an echo comes. True if the closing empty
  /// line came. False: `error` is `ETIMEOUT_ECHO`, `ETIMEOUT_STAT` or `ETIMEOUT_BODY`, by the line
  /// that did not come; the lines before it are kept and the stream's state is cleared.
  bool read(cSCIPRecord& record);

 private:
  bool readEcho(cSCIPRecord& record);
  bool readBody(cSCIPRecord& record);
  bool readLine(char* to);
  bool fail(cSCIPRecord& record, int error);

  std::istream& stream;
  std::size_t received = 0;
  // Gathers the body, which is then copied once; has room for the line that exceeds the limit.
  std::array<char, RECORD_LIMIT + LINE_LIMIT + 1> buffer;
  std::string_view line;
};
