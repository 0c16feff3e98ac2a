#pragma once

#include <array>
#include <future>
#include <string>
#include <thread>
#include <vector>

#include "bench/cTty.h"
#include "bench/iReader.h"

/// The floor: poll and read of 12 bytes, and nothing but a look for the empty line that ends a
/// record. No reader of 12 bytes that polls before each read can cost less.
class cFloorReader : public iReader {
 public:
  explicit cFloorReader(const std::string& path);
  void take() override;

 private:
  cDescriptor tty;
  std::array<char, 12> buffer;
  std::size_t filled = 0;
  std::size_t at = 0;
};

/// The same floor while a second thread of the process sleeps: from then on the kernel counts the
/// users of a descriptor at each call, which a library with a thread of its own cannot avoid.
class cThreadedFloorReader : public cFloorReader {
 public:
  explicit cThreadedFloorReader(const std::string& path);
  ~cThreadedFloorReader() override;

 private:
  std::promise<void> ending;
  std::thread sleeper;
};

/// poll and read of up to 4096 bytes, as much as a tty keeps, and plain decoding.
class cBlockReader : public iReader {
 public:
  explicit cBlockReader(const std::string& path);
  void take() override;

 private:
  std::size_t awaitRecord();

  cDescriptor tty;
  std::string pending;  // received, not decoded yet
  std::vector<int> distances;
};
