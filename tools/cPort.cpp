#include "tools/cPort.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <termios.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>

#include "tools/cAccess.h"
#include "tools/cFailure.h"
#include "tools/holders.h"
#include "tools/printable.h"

namespace tool {

namespace {

// A program that has just ended is off the port soon; one that was started at the same moment is
// when it has found this one's lock, on a busy machine too.
constexpr int FREE_TRIES = 5;
constexpr int LOSER_TRIES = 100;
constexpr std::chrono::milliseconds FREE_PAUSE{50};

int openTerminal() { return open("/dev/tty", O_RDWR | O_NOCTTY | O_CLOEXEC); }

bool hasTerminal() { return cDescriptor(openTerminal()).get() >= 0; }

std::string cureFor(const std::string& path, int error) {
  switch (error) {
    case ENOENT:
    case ENXIO:
    case ENODEV:
    case EIO:
      return "Is the sensor plugged in? 'tarvolink list' shows the serial devices of this machine; "
             "'sim:' is a simulated sensor.";
    case EACCES:
      return cAccess(path).getCure();
    case EPERM:
      return "This container or sandbox was not given the device: start it with it.";
    case EBUSY:
      return fmt::format("It is held by {}. End that program first.",
                         holdersOf(path).empty() ? "another process" : toText(holdersOf(path)));
    default:
      return "Give the path of a serial device; 'tarvolink list' shows those of this machine.";
  }
}

[[noreturn]] void fail(const std::string& path, int error) {
  throw cTransientError(eExit::BAD_INPUT, fmt::format("cannot open {}: {}. {}", oneLine(path),
                                                      std::strerror(error), cureFor(path, error)));
}

int openPort(const std::string& path) {
  // Without O_NONBLOCK the open would wait for a carrier that many cables have no wire for.
  const int fd = open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) fail(path, errno);
  return fd;
}

}  // namespace

cPort::cPort(const std::string& path) : name(path), hadTerminal(hasTerminal()), fd(openPort(path)) {
  if (isatty(fd.get()) == 0) fail(path, ENOTTY);
  requireFree();
  putRight();
}

void cPort::requireFree() const {
  for (int i = 0;; ++i) {
    const bool isLocked = flock(fd.get(), LOCK_EX | LOCK_NB) == 0;
    const auto all = holdersOf(name);
    if (isLocked && all.empty()) return;
    const auto holders = withoutLosers(all);
    const bool isTheirs = !isLocked && !holders.empty();
    if (isTheirs || i >= (isLocked && holders.empty() ? LOSER_TRIES : FREE_TRIES)) {
      failInUse(holders.empty() ? all : holders);
    }
    std::this_thread::sleep_for(FREE_PAUSE);
  }
}

void cPort::failInUse(const std::vector<cHolder>& holders) const {
  throw cTransientError(
      eExit::BAD_INPUT,
      fmt::format("{} is in use by {}. Two programs on one port get parts of each other's answers: "
                  "end the other one first.",
                  oneLine(name), holders.empty() ? "another process" : toText(holders)));
}

void cPort::putRight() const {
  termios line;
  if (tcgetattr(fd.get(), &line) != 0) fail(name, errno);
  cfmakeraw(&line);  // 8 bits, no parity, nothing translated, no XON/XOFF on output
  line.c_iflag &= ~static_cast<tcflag_t>(IXOFF | IXANY | IUCLC | INPCK);
  line.c_cflag &= ~static_cast<tcflag_t>(PARODD | CMSPAR);
  line.c_cflag |= CLOCAL | CREAD;
  line.c_lflag &= ~static_cast<tcflag_t>(TOSTOP);
  line.c_cc[VMIN] = 1;
  line.c_cc[VTIME] = 0;
  if (tcsetattr(fd.get(), TCSANOW, &line) != 0) fail(name, errno);
  tcflow(fd.get(), TCOON);  // output that an XOFF has stopped
}

void cPort::giveBackTerminal() const {
  if (hadTerminal) return;
  const cDescriptor terminal(openTerminal());
  if (terminal.get() >= 0) ioctl(terminal.get(), TIOCNOTTY);
}

bool cPort::isGone() const {
  pollfd device{fd.get(), 0, 0};
  return poll(&device, 1, 0) > 0 && (device.revents & (POLLHUP | POLLERR | POLLNVAL)) != 0;
}

}  // namespace tool
