#include "tarvolink/scip2/cSCIP2Claim.h"

#include <utility>

cSCIP2Claim::cSCIP2Claim(cSCIP2Comm& givenComm, const std::string& command, int count)
    : comm(givenComm), listener(comm.claimRequest(command, count)) {}

cSCIP2Claim::~cSCIP2Claim() {
  if (listener != nullptr) comm.release(listener);
}

boost::shared_ptr<cSCIPRecord> cSCIP2Claim::waitRecord(int timeout) {
  if (listener == nullptr) return boost::shared_ptr<cSCIPRecord>();
  boost::shared_ptr<cSCIPRecord> record = comm.waitRecord(listener, timeout);
  if (record && listener->isLateAnswer(*record)) comm.retire(listener);
  return record;
}

void cSCIP2Claim::refuse() {
  if (listener != nullptr) listener->mute();
}

boost::shared_ptr<cSCIP2RecordListener> cSCIP2Claim::keep() {
  return comm.keep(std::exchange(listener, nullptr));
}
