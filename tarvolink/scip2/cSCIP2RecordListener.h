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
/// The communication thread pushes, callers take. `cSCIP2Comm` makes, owns and reuses it.
class TARVOLINK_API cSCIP2RecordListener {
 public:
  cSCIP2RecordListener() = default;
  cSCIP2RecordListener(const cSCIP2RecordListener&) = delete;
  cSCIP2RecordListener& operator=(const cSCIP2RecordListener&) = delete;
  virtual ~cSCIP2RecordListener() = default;

  /// Makes it the mailbox of another request, which expects `count` records: below 0 without end, 0
  /// ends with the first. Keeps records that nobody took. Worker only.
  void resetResponse(std::string command, int tag, int count);

  /// Accepts `record` if it answers this request: if the tag in its echo (";" and a number) is this
  /// request's or, in an echo without a tag, the two letters of the command are. False: not
  /// accepted, nothing has changed. Worker only.
  bool push(boost::shared_ptr<cSCIPRecord> record);

  /// Takes the oldest record, waiting for one up to `timeout` milliseconds; 0 or less does not
  /// wait. Empty: none came. Any thread.
  boost::shared_ptr<cSCIPRecord> waitRecord(int timeout);

  /// Whether a record waits. Any thread.
  bool hasRecords();

  /// Whether it has received all records that it expected. Any thread.
  bool isComplete();

  /// Whether the echo of `record` has a tag other than this request's: then it is a late answer to
  /// an earlier one. Any thread.
  bool isLateAnswer(const cSCIPRecord& record);

  /// Drops the records that nobody took. Any thread.
  void clear();

  /// Drops its records and those that come from now on, until it serves another request. Any
  /// thread.
  void discardFurther();

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
  bool discarding = false;  // counts the records that come, and keeps none

  // Bookkeeping of cSCIP2Comm, under its listsMutex.
  bool claimed = false;    // one caller, or a driver's scan, has it for itself
  bool withdrawn = false;  // a late answer was taken from it: it serves no other request
  bool abandoned = false;  // its caller gave up while it still expected records
};
