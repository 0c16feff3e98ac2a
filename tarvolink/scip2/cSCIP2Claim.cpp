#include "tarvolink/scip2/cSCIP2Claim.h"

#include <utility>

cSCIP2Claim::cSCIP2Claim(cSCIP2Comm& comm, const std::string& command, int count)
    : comm(comm), listener(comm.claimRequest(command, count)) {}

cSCIP2Claim::~cSCIP2Claim() {
  if (listener != nullptr) comm.release(listener);
}

boost::shared_ptr<cSCIPRecord> cSCIP2Claim::waitRecord(int timeout) {
  if (listener == nullptr) return boost::shared_ptr<cSCIPRecord>();
  boost::shared_ptr<cSCIPRecord> record = comm.waitRecord(listener, timeout);
  // The record is handed out all the same: to wait for the right one would take another time-out.
  if (record && listener->isLateAnswer(*record)) comm.withdraw(listener);
  return record;
}

void cSCIP2Claim::discard() {
  if (listener != nullptr) listener->discardFurther();
}

boost::shared_ptr<cSCIP2RecordListener> cSCIP2Claim::detach() {
  return comm.detach(std::exchange(listener, nullptr));
}
