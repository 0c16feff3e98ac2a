#pragma once

#include <chrono>
#include <deque>

#include "sim/cSimFaults.h"
#include "sim/cSimRecord.h"
#include "sim/cSimTurn.h"

/// What is on its way to the host, and when its next bytes may leave: the line speed, and the
/// timing faults. It knows the clock only as an argument.
class cSimOutbox {
 public:
  using cMoment = cSimTurn::cMoment;
  using cSpan = std::chrono::nanoseconds;

  explicit cSimOutbox(cSimFaults& activeFaults) : faults(activeFaults) {}

  /// Bits per second, 10 a byte; 0: bytes take no time.
  void setSpeed(int bitsPerSecond) { speed = bitsPerSecond; }
  /// Puts a record behind the others; it leaves not before `earliest`.
  void push(cSimRecord record, cMoment earliest);
  bool isEmpty() const { return items.empty(); }
  bool hasRunningScan() const;
  std::size_t getWaiting() const { return waiting; }

  /// How many bytes at `front` may leave at that moment; 0: none yet, see `nextAt`.
  std::size_t due(cMoment now);
  const char* front() const { return items.front().record.bytes.data() + done; }
  bool atRecordBegin() const { return done == 0; }
  /// When `due` will next be above 0; not to be asked when empty.
  cMoment nextAt() const { return leaveAt; }
  /// So many of the due bytes have left. Returns whether that ended the record.
  bool sent(std::size_t count, cMoment now);
  /// Takes the record that has ended.
  cSimRecord take();

 private:
  struct cItem {
    cSimRecord record;
    cMoment earliest;
  };
  void begin(cMoment now);
  void plan(cMoment from);

  cSimFaults& faults;
  std::deque<cItem> items;
  std::size_t waiting = 0;
  int speed = 0;

  // of the record at the front
  bool begun = false;
  std::size_t done = 0;   ///< its bytes that have left
  std::size_t piece = 0;  ///< its bytes that leave together next, at leaveAt
  cMoment leaveAt;
  std::size_t splitAt = 0;
  cSpan splitPause{};
  bool single = false;
  cSpan singleGap{};
  cSpan burst{};
};
