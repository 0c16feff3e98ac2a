#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

/// Somebody who reads a sensor's scans; each way of doing it is one class. A reader that is made
/// has started an endless scan.
///
/// One thread at a time. What fails (no sensor, nothing within 5 s, a scan that is not the one
/// sent) throws std::runtime_error.
class iReader {
 public:
  static constexpr int PATIENCE = 5000;  ///< milliseconds

  virtual ~iReader() = default;
  /// Blocks until the next scan is in hand.
  virtual void take() = 0;
};

/// A way of reading: its name in the report, and how to begin with the sensor on a path.
struct cReaderKind {
  std::string name;
  std::function<std::unique_ptr<iReader>(const std::string& path)> make;
};

/// All of them; the library first, the floor second.
const std::vector<cReaderKind>& readerKinds();

/// The one of that name; std::runtime_error when there is none.
const cReaderKind& findReader(const std::string& name);
