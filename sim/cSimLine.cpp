#include "sim/cSimLine.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include "sim/cSimError.h"

namespace {

constexpr unsigned LINE_FEED_INTERVAL = 13;  // bytes of garbage, in garbage that has line feeds

struct cSpeed {
  int bitsPerSecond;
  speed_t constant;
};
const cSpeed SPEEDS[] = {{0, B0},           {9600, B9600},      {19200, B19200},
                         {38400, B38400},   {57600, B57600},    {115200, B115200},
                         {230400, B230400}, {460800, B460800},  {500000, B500000},
                         {921600, B921600}, {1000000, B1000000}};

}  // namespace

speed_t cSimLine::constantOf(int speed) {
  std::string known;
  for (const cSpeed& row : SPEEDS) {
    if (row.bitsPerSecond == speed) return row.constant;
    if (row.bitsPerSecond != 0) known += std::to_string(row.bitsPerSecond) + ", ";
  }
  throwSimError(std::to_string(speed) + " bits/s is not a line speed (" + known + "0 for any)",
                EINVAL);
}

cSimLine::cSimLine(const cSimSetting& setting, std::uint64_t seed)
    : garbage(setting.garbage),
      sensorSpeed(constantOf(setting.speed)),
      pty(sensorSpeed),
      random(seed) {}

std::string cSimLine::receive() {
  // Count first, then look at the host's speed, then read no more than that count. So nothing is
  // read that the host wrote after a change of speed that matches() did not see. What it wrote
  // before the change may be judged by the new speed, but a host drains or flushes its line before
  // it changes the speed.
  int count = 0;
  if (ioctl(pty.getMaster(), FIONREAD, &count) != 0 || count <= 0) return {};
  const bool isReadable = matches();
  std::string bytes(static_cast<std::size_t>(count), '\0');
  const ssize_t got = read(pty.getMaster(), bytes.data(), bytes.size());
  bytes.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
  if (!isReadable) {
    beginBurst();
    garble(bytes);
  }
  return bytes;
}

std::size_t cSimLine::send(const char* bytes, std::size_t count, bool isRecordStart) {
  if (isRecordStart) beginBurst();
  ssize_t written = 0;
  if (matches()) {
    written = write(pty.getMaster(), bytes, count);
  } else {
    std::string noise(bytes, count);
    garble(noise);
    written = write(pty.getMaster(), noise.data(), noise.size());
  }
  return written > 0 ? static_cast<std::size_t>(written) : 0;
}

// Drawn once a burst and not once a byte: a driver meets garbage that ends no line for its whole
// time-out, as well as garbage in lines, and a search has to survive both.
void cSimLine::beginBurst() {
  hasLineFeeds =
      garbage == eSimGarbage::LINES || (garbage == eSimGarbage::BY_SEED && random.below(2) == 0);
}

void cSimLine::garble(std::string& bytes) {
  for (char& byte : bytes) {
    byte = static_cast<char>(random.below(256));
    // Line ends come at the interval only, or garbage without any would have some by chance.
    if (byte == '\n' || byte == '\r') byte = '\0';
    if (hasLineFeeds && ++garbledBytes % LINE_FEED_INTERVAL == 0) byte = '\n';
  }
}
