#include "bench/cBlockReader.h"

#include <array>

cBlockReader::cBlockReader(const std::string& path) : tty(openRaw(path)) {
  writeScanCommand(tty.get());
  pending.erase(0, awaitRecord());  // the acknowledgement
}

void cBlockReader::take() {
  const std::size_t size = awaitRecord();
  decodeScan(pending.data(), size, distances);
  pending.erase(0, size);
}

/// Reads until `pending` begins with a whole record; returns its size.
std::size_t cBlockReader::awaitRecord() {
  std::array<char, 4096> block;
  std::size_t searched = 0;
  for (;;) {
    const std::size_t end = pending.find("\n\n", searched);
    if (end != std::string::npos) return end + 2;
    searched = pending.empty() ? 0 : pending.size() - 1;
    pending.append(block.data(), pollAndRead(tty.get(), block.data(), block.size()));
  }
}
