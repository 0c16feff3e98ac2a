#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

/// Reads a sensor's scans; each way of doing that is one class. The constructor starts an endless
/// scan.
///
/// One caller at a time. Any failure (no sensor, no scan within 5 s, a scan that differs from the
/// one sent) throws std::runtime_error.
class iReader {
 public:
  static constexpr int TIMEOUT = 5000;  ///< milliseconds

  virtual ~iReader() = default;
  /// Blocks until the next scan has been received and decoded.
  virtual void take() = 0;
};

/// A kind of reader: its name in the report, and how to construct one for the sensor on a path.
struct cReaderKind {
  std::string name;
  std::function<std::unique_ptr<iReader>(const std::string& path)> make;
};

/// All kinds; the library first, the floor second.
const std::vector<cReaderKind>& readerKinds();

/// The kind of that name. Throws std::runtime_error if there is none.
const cReaderKind& findReader(const std::string& name);
