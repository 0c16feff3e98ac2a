#pragma once

#include <boost/shared_ptr.hpp>
#include <boost/thread/mutex.hpp>
#include <list>
#include <string>

#include "tarvolink/base/cBSync.h"
#include "tarvolink/base/cTime.h"
#include "tarvolink/export.h"
#include "tarvolink/scip/cSCIPRecord.h"

/// The mailbox of one request: the records that answer it.
///
/// The communication thread pushes, callers take. Made, owned and reused by `cSCIP2Comm`.
class TARVOLINK_API cSCIP2RecordListener {
 public:
  cSCIP2RecordListener() = default;
  cSCIP2RecordListener(const cSCIP2RecordListener&) = delete;
  cSCIP2RecordListener& operator=(const cSCIP2RecordListener&) = delete;
  virtual ~cSCIP2RecordListener() = default;

  /// Makes it the mailbox of another request. `count` is the number of records expected: below
  /// 0 without end, 0 ends with the first. Records that nobody took stay. Worker only.
  void resetResponse(std::string command, int tag, int count);

  /// Takes `record` in if it answers this request: by the tag in its echo (";" and the
  /// number), or, in an echo without one, by the two letters of the command. False:
  /// it does not, nothing has changed. Worker only.
  bool push(boost::shared_ptr<cSCIPRecord> record);

  /// Takes the oldest record, waiting for one up to `timeout` milliseconds (0 or less only
  /// looks). Empty: none came. Any thread.
  boost::shared_ptr<cSCIPRecord> waitRecord(int timeout);

  /// Whether a record waits. Any thread.
  bool hasRecords();

  /// Whether it has received all that it expected. Any thread.
  bool isComplete();

  /// Whether the echo of `record` bears a tag, and not this request's: a late answer to an
  /// earlier one. Any thread.
  bool isLateAnswer(const cSCIPRecord& record);

  /// Forgets the records that nobody took. Any thread.
  void empty();

  /// Forgets its records and keeps none from now on, until it serves another request. Any
  /// thread.
  void mute();

 private:
  friend class cSCIP2Comm;

  bool answers(const cSCIPRecord& record) const;
  boost::shared_ptr<cSCIPRecord> take();

  int tag = 0;
  int count = 0;
  std::string command;
  kavTBX::cTime time;
  kavTBX::cBSync arrived;
  std::list<boost::shared_ptr<cSCIPRecord>> records;
  boost::mutex lock;  // guards all of this class
  bool busy = false;
  bool muted = false;

  // Bookkeeping of cSCIP2Comm, under its listsMutex.
  bool claimed = false;    // a caller, or a driver's scan, has it to itself
  bool retired = false;    // a late answer was taken from it: it serves no other request
  bool abandoned = false;  // its caller gave up while it still expected records
};
