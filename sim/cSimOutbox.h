#pragma once

#include <chrono>
#include <deque>

#include "sim/cSimFaults.h"
#include "sim/cSimRecord.h"
#include "sim/cSimTurn.h"

/// The records waiting to be sent, and when the next bytes of the first one are due: decided by
/// the line speed and the timing faults. It knows the clock only as an argument.
///
///     push -> countDue > 0 -> write data() -> markSent ... -> markSent returns true -> pop
class cSimOutbox {
 public:
  using cTimePoint = cSimTurn::cTimePoint;
  using cDuration = std::chrono::nanoseconds;

  explicit cSimOutbox(cSimFaults& faults) : faults(faults) {}

  /// Bits per second, 10 a byte; 0: bytes take no time.
  void setSpeed(int bitsPerSecond) { speed = bitsPerSecond; }
  /// Appends a record; none of it is due before `earliest`.
  void push(cSimRecord record, cTimePoint earliest);
  bool isEmpty() const { return items.empty(); }
  bool hasRunningScan() const;
  /// Bytes of all records that have not been sent.
  std::size_t countWaiting() const { return waiting; }

  /// How many bytes at `data` are due at that time; 0: none before `nextDue`.
  std::size_t countDue(cTimePoint now);
  const char* data() const { return items.front().record.bytes.data() + sentBytes; }
  bool isAtRecordStart() const { return sentBytes == 0; }
  /// When `countDue` will next be above 0. Only valid after `countDue` returned 0 and while the
  /// outbox is not empty.
  cTimePoint nextDue() const { return dueAt; }
  /// Notes that `count` of the due bytes were sent. Returns whether the record is complete.
  bool markSent(std::size_t count, cTimePoint now);
  /// Removes the complete record.
  cSimRecord pop();

 private:
  struct cItem {
    cSimRecord record;
    cTimePoint earliest;
  };
  void begin(cTimePoint now);
  void planChunk(cTimePoint from);
  std::size_t chunkSize() const;
  cTimePoint endOfBurst(cTimePoint when) const;

  cSimFaults& faults;
  std::deque<cItem> items;
  std::size_t waiting = 0;
  int speed = 0;

  // of the first record
  bool isBegun = false;       ///< its faults are drawn and its first chunk is planned
  std::size_t sentBytes = 0;  ///< its bytes that were sent
  std::size_t chunk = 0;      ///< its next bytes, which leave together at dueAt
  cTimePoint dueAt;
  std::size_t splitAt = 0;  ///< SPLIT: bytes of the first write; 0: not split
  cDuration splitPause{};
  bool isByteByByte = false;
  cDuration byteGap{};
  cDuration burst{};  ///< BURSTS: bytes leave at its multiples; 0: at any time
};
