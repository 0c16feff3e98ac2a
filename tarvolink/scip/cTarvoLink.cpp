#include "tarvolink/scip/cTarvoLink.h"

#include "tarvolink/scip/cSCIPError.h"
#include "tarvolink/scip/cSCIPRecordReader.h"

const std::string cTarvoLink::SEND_EOL = "\n";
const std::string cTarvoLink::REC_EOL = "\n";

namespace {

bool isDigit(const std::string& status) {
  return status.size() == 1 && status[0] >= '0' && status[0] <= '9';
}

}  // namespace

cTarvoLink::cTarvoLink(boost::shared_ptr<kavTBX::basic_portbuf<char>> portbuf)
    : portbuf(portbuf), stream(new kavTBX::basic_portstream<char>(portbuf.get())) {}

const int& cTarvoLink::doRaw1(std::string command) {
  *stream << command + SEND_EOL;  // one insertion, hence one write(2)
  lastRawCommand = command;
  record.command = command;
  isComplete = recvRecord();
  // An answer cut short because our own side interrupted it counts as none: its data is incomplete.
  const bool isCutOff = !isComplete && portbuf->isInterrupted();
  if (record.echo != command || isCutOff) {
    record.error = cSCIPError::EINVALID_ECHO;
  } else if (isDigit(record.status)) {
    record.error = (record.status[0] - '0') | cSCIPError::ESCIP1_STATUS;
  } else {
    record.error = cSCIPError::EINVALID_STATUS;
  }
  return record.error;
}

bool cTarvoLink::recvRecord() { return recvRecord(record); }

bool cTarvoLink::recvRecord(cSCIPRecord& received) {
  return cSCIPRecordReader(*stream).read(received);
}
