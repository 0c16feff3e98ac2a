#pragma once

#include <array>
#include <future>
#include <string>
#include <thread>

#include "bench/cTty.h"
#include "bench/iReader.h"

/// poll and read of 12 bytes, and nothing but a search for the empty line that ends a record. No
/// reader that polls before each read of 12 bytes can cost less.
class cFloorLoop {
 public:
  /// Opens the tty, requests scans and takes the acknowledgement.
  explicit cFloorLoop(const std::string& path);
  void awaitRecord();

 private:
  cDescriptor tty;
  std::array<char, 12> buffer;
  std::size_t filled = 0;
  std::size_t at = 0;
};

/// The floor: the loop alone.
class cFloorReader : public iReader {
 public:
  explicit cFloorReader(const std::string& path) : loop(path) {}
  void take() override { loop.awaitRecord(); }

 private:
  cFloorLoop loop;
};

/// The same while a second thread of the process sleeps: with two threads the kernel counts the
/// users of a descriptor at each call, which a library with its own thread cannot avoid.
class cThreadedFloorReader : public cFloorReader {
 public:
  explicit cThreadedFloorReader(const std::string& path);
  ~cThreadedFloorReader() override;

 private:
  std::promise<void> ending;
  std::thread sleeper;
};
