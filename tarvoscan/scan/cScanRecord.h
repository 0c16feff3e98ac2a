#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tarvoscan/scan/cScanRange.h"

struct cSCIPRecord;

namespace tarvo {

/// Tests a record of a scan and takes it apart. It knows no port and no clock. One thread.
///
/// A scan is good when all of it is as it must be: the echo of the command that was sent, its
/// status, the length of each line, each sum (SCIP 2.0), and every character one of the 64 of the
/// code (0x30 to 0x6F). In SCIP 2.0 no single flipped bit passes: the six bits of a character that
/// the sum covers change the sum, and the other two make a character that the code does not have.
class cScanRecord {
 public:
  /// For scans of `range`.
  explicit cScanRecord(const cScanRange& range);

  /// Whether `record` is a good answer to the command line `echo`. Then `distances` has them,
  /// millimetres, and `clock` the sensor's own time stamp, if it sends one.
  bool take(const cSCIPRecord& record, const std::string& echo, std::vector<int>& distances,
            std::optional<std::uint32_t>& clock);

  /// Bytes of the body of such a record: the time stamp and the data, each line with its sum and
  /// its end.
  static std::size_t getBodySize(const cScanRange& range);

  /// Bytes of the whole record, its echo of `echoSize` characters included.
  static std::size_t getSize(const cScanRange& range, std::size_t echoSize);

 private:
  bool takeClock(const char*& at, std::optional<std::uint32_t>& clock) const;
  bool takeLine(const char*& at, std::size_t length, char* to) const;

  const cScanRange range;
  std::string data;  // the characters of all distances: one may run across a line's end
};

}  // namespace tarvo
