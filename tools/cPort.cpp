#include "tools/cPort.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "tools/cFailure.h"

namespace tool {

namespace {

int openTerminal() { return open("/dev/tty", O_RDWR | O_NOCTTY | O_CLOEXEC); }

bool hasTerminal() {
  const int fd = openTerminal();
  if (fd >= 0) close(fd);
  return fd >= 0;
}

std::string cureFor(int error) {
  switch (error) {
    case ENOENT:
    case ENXIO:
    case ENODEV:
      return "Is the sensor plugged in? Serial devices are /dev/ttyACM* and /dev/ttyUSB*; 'sim:' "
             "is a simulated sensor.";
    case EACCES:
    case EPERM:
      return "You need to be in the group that owns it (ls -l shows the group; sudo adduser $USER "
             "GROUP, then log in again).";
    case EBUSY:
      return "Another process holds it.";
    default:
      return "Give the path of a serial device.";
  }
}

[[noreturn]] void fail(const std::string& path, int error) {
  throw cFailure(eExit::BAD_INPUT,
                 fmt::format("cannot open {}: {}. {}", path, std::strerror(error), cureFor(error)));
}

int openPort(const std::string& path) {
  const int fd = open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) fail(path, errno);
  if (isatty(fd) == 0) {
    close(fd);
    fail(path, ENOTTY);
  }
  return fd;
}

}  // namespace

cPort::cPort(const std::string& path) : hadTerminal(hasTerminal()), fd(openPort(path)) {}

cPort::~cPort() { close(fd); }

void cPort::giveBackTerminal() const {
  if (hadTerminal) return;
  const int terminal = openTerminal();
  if (terminal < 0) return;
  ioctl(terminal, TIOCNOTTY);
  close(terminal);
}

}  // namespace tool
