#include "bench/cTty.h"

#include <fcntl.h>
#include <poll.h>
#include <termios.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>

#include "bench/iReader.h"
#include "bench/plainDecoder.h"
#include "bench/scanRecord.h"

cDescriptor openRaw(const std::string& path) {
  cDescriptor tty(open(path.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
  termios modes{};
  if (tcgetattr(tty.get(), &modes) != 0) {
    throw std::system_error(errno, std::generic_category(), "cannot open " + path);
  }
  cfmakeraw(&modes);
  tcsetattr(tty.get(), TCSANOW, &modes);
  return tty;
}

std::size_t pollAndRead(int fd, char* buffer, std::size_t size) {
  pollfd waiting = {fd, POLLIN, 0};
  if (poll(&waiting, 1, iReader::TIMEOUT) <= 0) throw std::runtime_error("no scan arrived in time");
  const ssize_t count = read(fd, buffer, size);
  if (count <= 0) throw std::runtime_error("the sensor closed the line");
  return static_cast<std::size_t>(count);
}

void writeScanCommand(int fd) {
  const std::string line = std::string(SCAN_COMMAND) + ";1\n";
  if (write(fd, line.data(), line.size()) != static_cast<ssize_t>(line.size())) {
    throw std::runtime_error("the command cannot be written");
  }
}

void decodeScan(const char* record, std::size_t size, std::vector<int>& distances) {
  decodePlainly(record, size, distances);
  if (distances.size() != READINGS || distances.back() != distanceAt(LAST_STEP)) {
    throw std::runtime_error("a scan differs from the one sent");
  }
}
