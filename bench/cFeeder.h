#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <string>

#include "bench/cChild.h"
#include "bench/cDescriptor.h"

/// The leanest sensor that a driver accepts: a process that answers every command, and from the
/// first MD on writes the same scan record again and again, each with one write(2). It listens to
/// nothing more then; destroying it ends it.
class cFeeder {
 public:
  static constexpr std::size_t MOST_RECORDS = 1 << 16;  ///< whose ends are noted

  /// Begins to listen. @param period seconds between two records; 0: as fast as they are read.
  /// Throws std::system_error when no process, pty or memory is to be had.
  explicit cFeeder(double period);

  /// The pty to open.
  const std::string& getPath() const { return path; }

  /// When the write of record `index` (the first after the acknowledgement is 0) had returned, on
  /// the clock of now(). Only of records that are written and below MOST_RECORDS.
  double getEnd(std::size_t index) const;

 private:
  struct cNotes {
    std::atomic<double> ends[MOST_RECORDS];
  };
  /// Memory that both processes see.
  struct cUnmap {
    void operator()(cNotes* notes) const;
  };

  static cNotes* mapNotes();
  [[noreturn]] void feed(double period);
  std::string converse();

  std::unique_ptr<cNotes, cUnmap> notes;
  cDescriptor master;  // the child's, like the next
  std::string path;
  cDescriptor slave;  // keeps the line up while nobody else has it open
  std::unique_ptr<cChild> child;
};
