#include <stdexcept>

#include "bench/cAsioReaders.h"
#include "bench/cBlockReader.h"
#include "bench/cDriverReader.h"
#include "bench/cFloorReaders.h"
#include "bench/cScannerReader.h"
#include "bench/iReader.h"
#include "bench/tWorkerReader.h"

namespace {

template <typename tReader, typename... tArguments>
cReaderKind kind(const char* name, tArguments... arguments) {
  return {name, [arguments...](const std::string& path) {
            return std::make_unique<tReader>(path, arguments...);
          }};
}

/// The floor makes nothing of a record.
struct cNothing {};

std::unique_ptr<iReader> makeFloorWorker(const std::string& path) {
  const auto loop = std::make_shared<cFloorLoop>(path);
  return std::make_unique<tWorkerReader<cNothing>>([loop] {
    loop->awaitRecord();
    return cNothing();
  });
}

std::unique_ptr<iReader> makeBlockWorker(const std::string& path) {
  const auto reader = std::make_shared<cBlockReader>(path);
  return std::make_unique<tWorkerReader<std::vector<int>>>([reader] {
    reader->take();
    return reader->releaseDistances();
  });
}

}  // namespace

const std::vector<cReaderKind>& readerKinds() {
  static const std::vector<cReaderKind> kinds = {
      kind<cDriverReader>("library"),
      kind<cFloorReader>("f12"),
      kind<cThreadedFloorReader>("f12_threads"),
      {"f12_worker", makeFloorWorker},
      kind<cAsioSomeReader>("asio12"),
      kind<cAsioUntilReader>("asio_until"),
      kind<cBlockReader>("read4096"),
      {"read4096_worker", makeBlockWorker},
      kind<cScannerReader>("scanner"),
  };
  return kinds;
}

const cReaderKind& findReader(const std::string& name) {
  for (const cReaderKind& each : readerKinds()) {
    if (each.name == name) return each;
  }
  throw std::runtime_error("there is no reader named " + name);
}
