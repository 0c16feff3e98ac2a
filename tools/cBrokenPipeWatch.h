#pragma once

#include <thread>

#include "tools/cDescriptor.h"
#include "tools/cOutput.h"
#include "tools/cShutdown.h"

namespace tool {

/// Requests shutdown when the reader of an output closes its end, as `| head` does: immediately,
/// also while the sensor is searched for and nothing is written.
class cBrokenPipeWatch {
 public:
  /// A file that is to be replaced has no reader, and is not watched. Both must outlive the watch.
  cBrokenPipeWatch(const cOutput& output, cShutdown& stop);
  cBrokenPipeWatch(const cBrokenPipeWatch&) = delete;
  cBrokenPipeWatch& operator=(const cBrokenPipeWatch&) = delete;
  ~cBrokenPipeWatch();

 private:
  void watch(int data);

  cShutdown& stop;
  const cDescriptor stopEvent;  // readable when the watch is to end
  std::thread watcher;
};

}  // namespace tool
