#pragma once

#include <string>
#include <vector>

/// How SCIP writes numbers and sums.
class cSimCode {
 public:
  static constexpr std::size_t LINE = 64;  ///< characters of a full data line, without its sum

  /// The sum letter of a text: its bytes added up, the low six bits, plus 0x30.
  static char sum(const std::string& text);
  /// `text`, its sum and a line feed.
  static std::string withSum(const std::string& text);
  /// `value` in `width` characters of six bits each, most significant first, plus 0x30 each.
  static std::string encode(unsigned value, int width);
  /// All values in `width` characters each, one after the other.
  static std::string encode(const std::vector<int>& values, int width);
  /// `data` cut into lines of LINE characters, the last one with the rest; each with its sum
  /// (SCIP 2.0) or without (SCIP 1.x). A value may straddle two lines.
  static std::string dataLines(const std::string& data, bool sums);
};
