#include "bench/plainDecoder.h"

#include <cstring>
#include <stdexcept>

namespace {

constexpr std::size_t MAX_DATA = 8192;
constexpr int HEAD_LINES = 3;  // echo, status, time

bool hasSum(const char* line, std::size_t length) {
  unsigned sum = 0;
  for (std::size_t i = 0; i + 1 < length; ++i) sum += static_cast<unsigned char>(line[i]);
  return static_cast<char>((sum & 0x3F) + 0x30) == line[length - 1];
}

void decodeThree(const char* data, std::size_t size, std::vector<int>& distances) {
  distances.resize(size / 3);
  int* to = distances.data();
  for (std::size_t i = 0; i + 2 < size; i += 3) {
    *to++ = (data[i] - 0x30) << 12 | (data[i + 1] - 0x30) << 6 | (data[i + 2] - 0x30);
  }
}

}  // namespace

void decodePlainly(const char* record, std::size_t size, std::vector<int>& distances) {
  char data[MAX_DATA];
  std::size_t dataSize = 0;
  const char* const end = record + size;
  for (int lines = 0;; ++lines) {
    const void* const found = std::memchr(record, '\n', static_cast<std::size_t>(end - record));
    if (found == nullptr) throw std::runtime_error("a record without an end");
    const auto length = static_cast<std::size_t>(static_cast<const char*>(found) - record);
    if (length == 0) break;
    if (lines > 0 && !hasSum(record, length)) throw std::runtime_error("a line with a wrong sum");
    if (lines >= HEAD_LINES && dataSize + length <= MAX_DATA) {
      std::memcpy(data + dataSize, record, length - 1);
      dataSize += length - 1;
    }
    record += length + 1;
  }
  decodeThree(data, dataSize, distances);
}
