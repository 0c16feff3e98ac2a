#pragma once

#include <string>
#include <utility>
#include <vector>

#include "bench/cTty.h"
#include "bench/iReader.h"

/// poll and read of up to 4096 bytes, as many as a tty buffers, and plain decoding.
class cBlockReader : public iReader {
 public:
  explicit cBlockReader(const std::string& path);
  void take() override;

  /// What the latest take() has decoded; the next one makes a new array.
  std::vector<int> releaseDistances() { return std::move(distances); }

 private:
  std::size_t awaitRecord();

  cDescriptor tty;
  std::string pending;  // received but not decoded yet
  std::vector<int> distances;
};
