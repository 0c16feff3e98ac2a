#pragma once

#include <array>
#include <condition_variable>
#include <exception>
#include <future>
#include <mutex>
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

/// The same in a thread of its own, which wakes the caller for each record: the least cost of a
/// driver that receives while its caller does other things.
class cWorkerFloorReader : public iReader {
 public:
  explicit cWorkerFloorReader(const std::string& path);
  ~cWorkerFloorReader() override;
  void take() override;

 private:
  void work();
  bool publish();

  cFloorLoop loop;
  std::mutex mutex;
  std::condition_variable changed;
  int arrived = 0;             // records not taken yet; under `mutex`, like the next two
  bool isEnding = false;       // the worker checks it after each record
  std::exception_ptr failure;  // what ended the worker otherwise
  std::thread worker;
};
