#pragma once

#include <array>
#include <cstddef>
#include <istream>
#include <string_view>

#include "tarvolink/scip/cSCIPRecord.h"

/// Reads one response off a stream: echo line, status line, body lines, empty line.
///
/// It knows no device and no thread: whatever gives characters will do. A read fails when
/// the stream ends before a character of the line came; characters followed by the
/// stream's end are a line, and the next read of that response then fails at once.
/// A carriage return is a character like any other. One caller at a time.
class cSCIPRecordReader {
 public:
  /// Characters of the longest line that is read; a longer one is a failed read.
  static constexpr std::size_t LINE_LIMIT = 4096;
  /// Characters of the longest response, skipped empty lines counted; more is a failed read.
  static constexpr std::size_t RECORD_LIMIT = 65536;

  /// A reader of one response off `source`, which must outlive it.
  explicit cSCIPRecordReader(std::istream& source) : stream(source) {}

  /// Fills `record`; `command` stays as it is, and `time` until an echo comes. True when the
  /// closing empty line came. False: `error` is `ETIMEOUT_ECHO`, `ETIMEOUT_STAT` or
  /// `ETIMEOUT_BODY` by what was waited for, what came before it is kept, and the stream's
  /// state is cleared; characters already read are gone.
  bool read(cSCIPRecord& record);

 private:
  bool readEcho(cSCIPRecord& record);
  bool readBody(cSCIPRecord& record);
  bool readLine(char* to);
  bool fail(cSCIPRecord& record, int error);

  std::istream& stream;
  std::size_t received = 0;
  // The body is gathered here, so that it is copied once; room for the line that goes too far.
  std::array<char, RECORD_LIMIT + LINE_LIMIT + 1> buffer;
  std::string_view line;
};
