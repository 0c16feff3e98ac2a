#include "tarvolink/driver/cSensorDriver.h"

#include <cstdint>

cSensorDriver::cSensorDriver(boost::shared_ptr<cTarvoLink> givenLink) : link(givenLink) {}

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
  std::vector<int> values;
  if (width < 1 || data.size() % static_cast<std::size_t>(width) != 0) return values;
  values.reserve(data.size() / static_cast<std::size_t>(width));
  for (auto next = data.cbegin(); next != data.cend();) {
    std::uint32_t value = 0;  // unsigned: stray characters may go below zero and wrap
    for (int i = 0; i < width; ++i, ++next) {
      value = value * 64 + static_cast<std::uint32_t>(static_cast<signed char>(*next) - 0x30);
    }
    values.push_back(static_cast<std::int32_t>(value));
  }
  return values;
}
