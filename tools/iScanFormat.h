#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <string>

#include "tools/cScanRange.h"

namespace tool {

/// The forms in which scans are written.
enum class eScanFormat { TABLE, CSV, JSON, NONE };

/// Where scans come from, as the user and the sensor name it.
struct cOrigin {
  std::string device;
  std::string product;
  std::string serial;
};

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

  /// The rows of scan `number` (the first is 1); `rate` is in scans per second, 0 when not known
  /// yet.
  virtual std::string rows(std::size_t number, const cScan& scan, double rate) const = 0;
};

/// The form of that kind; `range` says which readings count as distances, and must outlive it.
/// `columns` is for CSV alone.
std::unique_ptr<iScanFormat> makeScanFormat(eScanFormat format, const cScanRange& range,
                                            const cOrigin& origin, const cCsvColumns& columns);

}  // namespace tool
