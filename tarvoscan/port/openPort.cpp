#include "tarvoscan/port/openPort.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <termios.h>

#include <cerrno>
#include <chrono>
#include <system_error>
#include <thread>

#include "tarvoscan/cSerialDevice.h"
#include "tarvoscan/port/portUsers.h"

namespace tarvo {

namespace {

// A program that has just ended, or that gives way to this one's lock, is off the port soon.
constexpr int BUSY_RETRIES = 5;
constexpr std::chrono::milliseconds BUSY_PAUSE{50};

eProblem kindOf(int error) {
  switch (error) {
    case ENOENT:
    case ENXIO:
    case ENODEV:
    case EIO:
      return eProblem::DEVICE_MISSING;
    case EACCES:
    case EPERM:
      return eProblem::DEVICE_FORBIDDEN;
    case EBUSY:
      return eProblem::DEVICE_IN_USE;
    case EMFILE:
    case ENFILE:
    case ENOMEM:
      return eProblem::NO_THREAD;
    default:
      return eProblem::DEVICE_UNUSABLE;
  }
}

std::string hintFor(const std::string& path, int error) {
  switch (kindOf(error)) {
    case eProblem::DEVICE_MISSING:
      return "Is the sensor plugged in and powered?";
    case eProblem::DEVICE_FORBIDDEN:
      return error == EACCES
                 ? describeSerialDevice(path).hint
                 : "This container or sandbox was not given the device: start it with it.";
    case eProblem::DEVICE_IN_USE:
      return "End the other program first.";
    case eProblem::NO_THREAD:
      return "The system is out of descriptors or memory.";
    default:
      return "Give the path of a serial device.";
  }
}

cProblem inUse(const std::string& path, const std::vector<cPortUser>& users) {
  return {
      eProblem::DEVICE_IN_USE,
      fmt::format("{} is in use by {}.", path, users.empty() ? "another program" : toText(users)),
      "Two programs on one port get parts of each other's answers: end the other one first."};
}

cProblem requireFree(const std::string& path, int terminal) {
  for (int attempt = 0;; ++attempt) {
    const bool isLocked = flock(terminal, LOCK_EX | LOCK_NB) == 0;
    // Whoever failed to lock it has it open for a moment, too: only the owner of the lock counts.
    const auto users = isLocked ? findPortUsers(path) : findLockOwners(path);
    if (isLocked && users.empty()) return {};
    if (attempt == BUSY_RETRIES) return inUse(path, users);
    std::this_thread::sleep_for(BUSY_PAUSE);
  }
}

/// Undoes what an earlier program may have left that the driver library takes as it finds it.
bool resetLine(int terminal) {
  termios line;
  if (tcgetattr(terminal, &line) != 0) return false;
  cfmakeraw(&line);  // 8 bits, no parity, nothing translated, no XON/XOFF on output
  line.c_iflag &= ~static_cast<tcflag_t>(IXOFF | IXANY | IUCLC | INPCK);
  line.c_cflag &= ~static_cast<tcflag_t>(PARODD | CMSPAR);
  line.c_cflag |= CLOCAL | CREAD;
  line.c_lflag &= ~static_cast<tcflag_t>(TOSTOP);
  line.c_cc[VMIN] = 1;
  line.c_cc[VTIME] = 0;
  if (tcsetattr(terminal, TCSANOW, &line) != 0) return false;
  tcflow(terminal, TCOON);  // output that an XOFF has stopped
  return true;
}

}  // namespace

cProblem describeError(const std::string& path, int error) {
  return {kindOf(error),
          fmt::format("cannot open {}: {}.", path, std::generic_category().message(error)),
          hintFor(path, error)};
}

cDescriptor openPort(const std::string& path, cProblem& problem) {
  cDescriptor terminal(open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
  if (terminal.get() < 0) {
    problem = describeError(path, errno);
    return cDescriptor();
  }
  if (isatty(terminal.get()) == 0) {
    problem = describeError(path, ENOTTY);
    return cDescriptor();
  }
  problem = requireFree(path, terminal.get());
  if (!problem && !resetLine(terminal.get())) problem = describeError(path, errno);
  return problem ? cDescriptor() : std::move(terminal);
}

bool isDisconnected(int terminal) {
  pollfd device{terminal, 0, 0};
  return poll(&device, 1, 0) > 0 && (device.revents & (POLLHUP | POLLERR | POLLNVAL)) != 0;
}

bool isElsewhere(const std::string& path, int terminal) {
  struct stat named {};
  struct stat opened {};
  if (stat(path.c_str(), &named) != 0 || fstat(terminal, &opened) != 0) return true;
  return named.st_rdev != opened.st_rdev || named.st_dev != opened.st_dev ||
         named.st_ino != opened.st_ino;
}

}  // namespace tarvo
