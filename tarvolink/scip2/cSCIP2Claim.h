#pragma once

#include <string>

#include "tarvolink/scip2/cSCIP2Comm.h"

/// One request whose listener nobody else gets while this object lives, so that callers in
/// several threads each take their own answers. For one thread.
///
/// After a late answer to an earlier request was taken from it, the listener is used no more:
/// a late answer spoils one exchange and not all that follow.
class cSCIP2Claim {
 public:
  /// Sends `command`; blocks until its line is written.
  cSCIP2Claim(cSCIP2Comm& comm, const std::string& command, int count);
  /// Gives the listener back; an answer still to come is collected all the same.
  ~cSCIP2Claim();
  cSCIP2Claim(const cSCIP2Claim&) = delete;
  cSCIP2Claim& operator=(const cSCIP2Claim&) = delete;

  /// Takes the next record, waiting up to `timeout` milliseconds; empty: none came, or the
  /// conversation has ended.
  boost::shared_ptr<cSCIPRecord> waitRecord(int timeout);

  /// Takes no further record, and has none kept that comes later.
  void refuse();

  /// Hands the listener to a scan, see `cSCIP2Comm::keep`; this object then holds it no more.
  boost::shared_ptr<cSCIP2RecordListener> keep();

 private:
  cSCIP2Comm& comm;
  cSCIP2RecordListener* listener;
};
