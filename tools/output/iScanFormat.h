#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "tarvoscan/tarvoscan.h"

namespace tool {

/// The forms in which scans are written.
enum class eScanFormat { TABLE, CSV, JSON, NONE };

/// Columns that CSV has on request.
struct cCsvColumns {
  bool hasOrigin = false;
  bool hasPosition = false;  ///< x ahead and y left, millimetres
};

/// Their names on the command line; NONE has none.
const std::map<std::string, eScanFormat>& scanFormats();

/// Turns scans into the rows of one form of output. Texts end in a line end, or are empty.
class iScanFormat {
 public:
  virtual ~iScanFormat() = default;

  /// What comes before the first scan.
  virtual std::string header() const = 0;

  /// The rows of scan `number` (the first is 1, lost ones leave gaps); `rate` is in scans per
  /// second, 0 when not known yet.
  virtual std::string rows(std::uint64_t number, const tarvo::cLaserScan& scan,
                           double rate) const = 0;
};

/// The form of that kind, for scans of `device` as the user named it. `columns` is for CSV alone.
std::unique_ptr<iScanFormat> makeScanFormat(eScanFormat format, const std::string& device,
                                            const cCsvColumns& columns);

}  // namespace tool
