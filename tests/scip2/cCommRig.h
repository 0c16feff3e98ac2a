#pragma once

#include "tarvolink/scip2/cSCIP2Comm.h"
#include "tests/scip/cRig.h"

/// A communication thread that runs, with a sensor that answers by `rule`.
struct cCommRig : cRig {
  explicit cCommRig(cScriptedPeer::tRule rule, int timeout = 50)
      : cRig(std::move(rule), timeout), comm(link) {
    comm.run();
  }

  cSCIP2Comm comm;
};

/// The echo of the next record, or a word for none.
inline std::string takeEcho(cSCIP2RecordListener* listener, int timeout = PATIENCE) {
  const boost::shared_ptr<cSCIPRecord> record = listener->waitRecord(timeout);
  return record ? record->echo : "(none)";
}
