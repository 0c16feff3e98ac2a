#include "bench/cFloorReaders.h"

cFloorLoop::cFloorLoop(const std::string& path) : tty(openRaw(path)) {
  writeScanCommand(tty.get());
  awaitRecord();  // the acknowledgement
}

void cFloorLoop::awaitRecord() {
  char before = 0;
  for (;;) {
    if (at == filled) {
      filled = pollAndRead(tty.get(), buffer.data(), buffer.size());
      at = 0;
    }
    const char c = buffer[at++];
    if (c == '\n' && before == '\n') return;
    before = c;
  }
}

cThreadedFloorReader::cThreadedFloorReader(const std::string& path)
    : cFloorReader(path), sleeper([this] { ending.get_future().wait(); }) {}

cThreadedFloorReader::~cThreadedFloorReader() {
  ending.set_value();
  sleeper.join();
}
