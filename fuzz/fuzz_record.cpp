// Records: the reader itself, and the link's exchange as in SCIP 1.x (the echo is the command) and
// as in SCIP 2.0 (an echo with a tag).

#include <boost/shared_ptr.hpp>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>

#include "fuzz/cMemoryPort.h"
#include "tarvolink/scip/cSCIPError.h"
#include "tarvolink/scip/cSCIPRecordReader.h"
#include "tarvolink/scip/cTarvoLink.h"

namespace {

void expect(bool condition) {
  if (!condition) std::abort();
}

void readAll(const std::string& bytes) {
  std::istringstream stream(bytes);
  for (bool more = true; more;) {
    cSCIPRecord record;
    const bool isComplete = cSCIPRecordReader(stream).read(record);
    expect(isComplete == (record.error == 0));
    expect(record.echo.size() <= cSCIPRecordReader::LINE_LIMIT);
    expect(record.body.size() <= cSCIPRecordReader::RECORD_LIMIT);
    expect(!isComplete || !record.echo.empty());
    more = stream.rdbuf()->in_avail() > 0;
  }
}

/// The result of an exchange, to be compared between different piece sizes.
std::string exchange(const std::string& command, const std::string& bytes, std::size_t piece) {
  const boost::shared_ptr<cMemoryPort> port(new cMemoryPort(piece));
  cTarvoLink link(port);
  port->arrive(bytes);
  const int error = link.doRaw1(command);
  const bool hasStatus = (error & cSCIPError::ESCIP1_STATUS) != 0;
  expect(!hasStatus || (link.record.echo == command && link.record.status.size() == 1));
  return std::to_string(error) + "\n" + link.record.echo + "\n" + link.record.status + "\n" +
         link.record.body;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  readAll(bytes);
  for (const std::string command : {"V", "MD0044072501000;1"}) {
    std::string answer = command;
    answer.append("\n").append(bytes);
    const std::string byOne = exchange(command, answer, 1);
    expect(byOne == exchange(command, answer, 12));
    expect(byOne == exchange(command, answer, answer.size()));
  }
  return 0;
}
