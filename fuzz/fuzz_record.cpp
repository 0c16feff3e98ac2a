// Records: the reader by itself. Exchanges are the other targets'.

#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>

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

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  readAll(std::string(reinterpret_cast<const char*>(data), size));
  return 0;
}
