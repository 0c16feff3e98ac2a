#pragma once

#include <string>

#include "tarvolink/scip2/cSCIP2Comm.h"

/// One request whose listener serves no other caller while this object lives, so that callers in
/// several threads each take their own answers. For one thread.
///
/// Once a late answer to an earlier request has been taken from the listener, no other request gets
/// it: a late answer spoils one exchange and not all that follow.
class cSCIP2Claim {
 public:
  /// Sends `command`; blocks until its line is written.
  cSCIP2Claim(cSCIP2Comm& comm, const std::string& command, int count);
  /// Gives the listener back, which still collects an answer that comes later.
  ~cSCIP2Claim();
  cSCIP2Claim(const cSCIP2Claim&) = delete;
  cSCIP2Claim& operator=(const cSCIP2Claim&) = delete;

  /// Takes the next record, waiting up to `timeout` milliseconds; empty: none came, or the
  /// conversation has ended.
  boost::shared_ptr<cSCIPRecord> waitRecord(int timeout);

  /// Drops the listener's records, and those that come later.
  void discard();

  /// Hands the listener over to a scan, see `cSCIP2Comm::detach`; this object then has none.
  boost::shared_ptr<cSCIP2RecordListener> detach();

 private:
  cSCIP2Comm& comm;
  cSCIP2RecordListener* listener;
};
