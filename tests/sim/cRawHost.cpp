#include "tests/sim/cRawHost.h"

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <stdexcept>

namespace {
const int TIME_OUT = 10000;  // ms

speed_t constantOf(int speed) {
  switch (speed) {
    case 19200:
      return B19200;
    case 57600:
      return B57600;
    case 115200:
      return B115200;
    default:
      return B500000;
  }
}
}  // namespace

cRawHost::cRawHost(const std::string& path, int speed)
    : fd(open(path.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC)) {
  if (fd < 0) throw std::runtime_error("cannot open " + path);
  if (speed != 0) setSpeed(speed);
}

cRawHost::~cRawHost() { close(fd); }

void cRawHost::setSpeed(int bitsPerSecond) {
  termios modes;
  tcgetattr(fd, &modes);
  cfmakeraw(&modes);
  cfsetspeed(&modes, constantOf(bitsPerSecond));
  tcsetattr(fd, TCSANOW, &modes);
}

void cRawHost::write(const std::string& bytes) {
  if (::write(fd, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()))
    throw std::runtime_error("the pty took less than was written");
}

bool cRawHost::readSome() {
  pollfd input = {fd, POLLIN, 0};
  char bytes[4096];
  if (poll(&input, 1, TIME_OUT) <= 0) return false;
  const ssize_t count = read(fd, bytes, sizeof bytes);
  if (count > 0) arrived.append(bytes, static_cast<std::size_t>(count));
  return count > 0;
}

std::string cRawHost::take(std::size_t count) {
  const std::string bytes = arrived.substr(0, count);
  arrived.erase(0, bytes.size());
  return bytes;
}

std::string cRawHost::readUntil(const std::string& end) {
  std::size_t place;
  while ((place = arrived.find(end)) == std::string::npos && readSome()) {
  }
  return take(place == std::string::npos ? arrived.size() : place + end.size());
}

std::string cRawHost::readBytes(std::size_t count) {
  while (arrived.size() < count && readSome()) {
  }
  return take(count);
}

std::string cRawHost::ask(const std::string& command) {
  write(command + "\n");
  return readRecord();
}

std::string cRawHost::readAll() {
  const std::string end = "QT;end\n00P\n\n";
  write("QT;end\n");
  const std::string all = readUntil(end);
  return all.substr(0, all.find(end));
}

void cRawHost::flush() {
  arrived.clear();
  tcflush(fd, TCIFLUSH);
}

bool cRawHost::isHungUp() {
  while (readSome()) {
  }
  char byte;
  return read(fd, &byte, 1) <= 0;
}

char raw::sum(const std::string& text) {
  int total = 0;
  for (char c : text) total += static_cast<unsigned char>(c);
  return static_cast<char>(total % 64 + '0');
}

std::vector<std::string> raw::lines(const std::string& record) {
  std::vector<std::string> all;
  std::size_t begin = 0;
  for (std::size_t end; (end = record.find('\n', begin)) != std::string::npos; begin = end + 1)
    all.push_back(record.substr(begin, end - begin));
  return all;
}

std::vector<int> raw::decode(const std::string& data, int width) {
  std::vector<int> values;
  for (std::size_t i = 0; i < data.size(); ++i) {
    if (i % static_cast<std::size_t>(width) == 0) values.push_back(0);
    values.back() = values.back() * 64 + data[i] - '0';
  }
  return values;
}

std::vector<int> raw::readings(const std::string& record, int width) {
  const std::vector<std::string> all = lines(record);
  std::string data;
  for (std::size_t i = 1; i + 1 < all.size(); ++i) {
    const std::string text = all[i].substr(0, all[i].size() - 1);
    if (sum(text) != all[i].back()) return {};
    if (i >= 3) data += text;
  }
  return decode(data, width);
}
