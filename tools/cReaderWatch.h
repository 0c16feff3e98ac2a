#pragma once

#include <thread>

#include "tools/cDescriptor.h"
#include "tools/cOutput.h"
#include "tools/cStop.h"

namespace tool {

/// Asks for the end when nobody takes an output's data any more, as `| head` does not when it has
/// had enough: at once, also while the sensor is still looked for and nothing is written.
class cReaderWatch {
 public:
  /// Nothing of a file that is to be replaced, which has no reader. Both must outlive the watch.
  cReaderWatch(const cOutput& output, cStop& ender);
  cReaderWatch(const cReaderWatch&) = delete;
  cReaderWatch& operator=(const cReaderWatch&) = delete;
  ~cReaderWatch();

 private:
  void watch(int data);

  cStop& stop;
  const cDescriptor over;  // readable when the watch is to end
  std::thread watcher;
};

}  // namespace tool
