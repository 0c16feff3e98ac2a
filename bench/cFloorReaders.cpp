#include "bench/cFloorReaders.h"

#include <chrono>
#include <stdexcept>

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

cWorkerFloorReader::cWorkerFloorReader(const std::string& path)
    : loop(path), worker([this] { work(); }) {}

cWorkerFloorReader::~cWorkerFloorReader() {
  {
    const std::lock_guard<std::mutex> guard(mutex);
    isEnding = true;
  }
  worker.join();
}

void cWorkerFloorReader::take() {
  std::unique_lock<std::mutex> lock(mutex);
  const auto isDue = [this] { return arrived > 0 || failure; };
  if (!changed.wait_for(lock, std::chrono::milliseconds(TIMEOUT), isDue)) {
    throw std::runtime_error("no scan arrived in time");
  }
  if (arrived == 0) std::rethrow_exception(failure);
  --arrived;
}

void cWorkerFloorReader::work() {
  try {
    do {
      loop.awaitRecord();
    } while (publish());
  } catch (...) {
    const std::lock_guard<std::mutex> guard(mutex);
    failure = std::current_exception();
    changed.notify_one();
  }
}

/// Counts a record and wakes the caller; false when there is no caller any more.
bool cWorkerFloorReader::publish() {
  const std::lock_guard<std::mutex> guard(mutex);
  ++arrived;
  changed.notify_one();
  return !isEnding;
}
