#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <string>

#include "bench/cChild.h"
#include "bench/cPty.h"

/// The simplest sensor that a driver accepts: a process that answers every command, and after the
/// first MD writes the same scan record again and again, each with one write(2). It reads nothing
/// from then on; the destructor ends it.
class cFeeder {
 public:
  static constexpr std::size_t MAX_RECORDS = 1 << 16;  ///< whose times are recorded

  /// Starts listening. @param period seconds between two records; 0: as fast as they are read.
  /// Throws std::system_error when no process, pty or memory is available.
  explicit cFeeder(double period);

  /// The pty to open.
  const std::string& getPath() const { return pty.path; }

  /// When the write of record `index` (0 is the first after the acknowledgement) returned, on the
  /// clock of now(). Only for records already written, and below MAX_RECORDS.
  double getEnd(std::size_t index) const;

 private:
  /// In memory that both processes share.
  struct cSharedTimes {
    std::atomic<double> ends[MAX_RECORDS];
  };
  struct cUnmap {
    void operator()(cSharedTimes* times) const;
  };

  static cSharedTimes* mapSharedTimes();
  [[noreturn]] void feed(double period);
  std::string serveUntilScan();

  std::unique_ptr<cSharedTimes, cUnmap> times;
  cPty pty;  // open in the child only
  std::unique_ptr<cChild> child;
};
