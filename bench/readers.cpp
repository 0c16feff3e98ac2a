#include <stdexcept>

#include "bench/cAsioReaders.h"
#include "bench/cBlockReader.h"
#include "bench/cDriverReader.h"
#include "bench/cFloorReaders.h"
#include "bench/iReader.h"

namespace {

template <typename tReader, typename... tArguments>
cReaderKind kind(const char* name, tArguments... arguments) {
  return {name, [arguments...](const std::string& path) {
            return std::make_unique<tReader>(path, arguments...);
          }};
}

}  // namespace

const std::vector<cReaderKind>& readerKinds() {
  static const std::vector<cReaderKind> kinds = {
      kind<cDriverReader>("library"),
      kind<cFloorReader>("f12"),
      kind<cThreadedFloorReader>("f12_threads"),
      kind<cWorkerFloorReader>("f12_worker"),
      kind<cAsioSomeReader>("asio12"),
      kind<cAsioUntilReader>("asio_until"),
      kind<cBlockReader>("read4096"),
  };
  return kinds;
}

const cReaderKind& findReader(const std::string& name) {
  for (const cReaderKind& each : readerKinds()) {
    if (each.name == name) return each;
  }
  throw std::runtime_error("there is no reader named " + name);
}
