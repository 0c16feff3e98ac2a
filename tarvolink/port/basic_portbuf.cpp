#include "tarvolink/port/basic_portbuf.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <utility>

namespace kavTBX {

namespace {

/// The speed constant for `baudRate`; B0, with a complaint, for one that is not offered.
speed_t toSpeed(std::int32_t baudRate) {
  switch (baudRate) {
    case 9600:
      return B9600;
    case 19200:
      return B19200;
    case 38400:
      return B38400;
    case 57600:
      return B57600;
    case 115200:
      return B115200;
    case 230400:
      return B230400;
    case 460800:
      return B460800;
    case 500000:
      return B500000;
    default:
      std::cerr << "PortSetting:: Invalid Baud Rate : " << baudRate << std::endl;
      return B0;
  }
}

void setFlag(tcflag_t& flags, tcflag_t flag, bool on) { flags = on ? flags | flag : flags & ~flag; }

bool setCharLength(tcflag_t& control, std::int32_t charLength) {
  if (charLength != 7 && charLength != 8) {
    std::cerr << "basic_portbuf::Invalid character length:" << charLength << std::endl;
    return false;
  }
  control = (control & ~static_cast<tcflag_t>(CSIZE)) | (charLength == 7 ? CS7 : CS8);
  return true;
}

void setParity(tcflag_t& control, std::int32_t parity) {
  setFlag(control, PARENB, parity != 0);
  if (parity == 2) {
    control |= PARODD;
  } else if (parity != 0) {
    control &= PARODD;
  }
}

bool setStopBits(tcflag_t& control, std::int32_t stopBits) {
  if (stopBits != 1 && stopBits != 2) {
    std::cerr << "basic_portbuf::Invalid stop bit length:" << stopBits << std::endl;
    return false;
  }
  setFlag(control, CSTOPB, stopBits == 2);
  return true;
}

// Signals in one wait from which on it is no more begun anew by each: a host's timer that is faster
// than the time-out would make it endless.
constexpr int SIGNAL_STORM = 16;

/// Waits the whole time-out, with all signals blocked.
int waitUndisturbed(struct pollfd& waiting, int timeout) {
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  int ready = 0;
  do {
    ready = ::poll(&waiting, 1, timeout);
  } while (ready == -1 && errno == EINTR);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  return ready;
}

/// The value with which `underflow` hands out a character: see there.
int signExtended(char c) { return static_cast<signed char>(c); }

}  // namespace

basic_portbuf<char>::basic_portbuf(std::string devicePath,
                                   boost::shared_ptr<cPortSetting> givenSetting)
    : setting(givenSetting ? givenSetting : boost::shared_ptr<cPortSetting>(new cPortSetting)) {
  setupSelf(std::move(devicePath));
}

basic_portbuf<char>::~basic_portbuf() {
  if (fd > 0) ::close(fd);
}

void basic_portbuf<char>::setupSelf(std::string devicePath) {
  if (fd > 0) ::close(fd);
  fd = -1;
  discardInput();
  usable = false;
  device = std::move(devicePath);
  // What may throw comes first: of a constructor that threw, nobody closes the descriptor.
  const boost::shared_ptr<cPortSetting> copy(new cPortSetting(*setting));
  fd = ::open(device.c_str(), O_RDWR, 0);
  if (fd < 0) {
    std::perror("basic_portbuf::c'tor");
    return;
  }
  ::fcntl(fd, F_SETFD, FD_CLOEXEC);
  readTimeout = 2500;
  usable = true;
  if (::tcgetattr(fd, &savedAttributes) != 0) {
    std::perror("basic_portbuf::c'tor::tcgetattr");
    usable = false;
    return;
  }
  usable = termSetup(copy);
}

bool basic_portbuf<char>::termSetup(boost::shared_ptr<cPortSetting> wanted) {
  if (!usable) return false;
  ::tcflush(fd, TCIOFLUSH);
  struct termios attributes = savedAttributes;
  return applySetting(*wanted, attributes) && ::tcsetattr(fd, TCSADRAIN, &attributes) == 0;
}

bool basic_portbuf<char>::applySetting(const cPortSetting& wanted,
                                       struct termios& attributes) const {
  setFlag(attributes.c_oflag, OPOST, false);
  ::cfsetspeed(&attributes, toSpeed(wanted.baudRate));
  if (!setCharLength(attributes.c_cflag, wanted.charLength)) return false;
  setFlag(attributes.c_iflag, BRKINT | ISTRIP | ICRNL, false);
  setFlag(attributes.c_iflag, IXON, wanted.softFlowControl);
  setParity(attributes.c_cflag, wanted.parity);
  setFlag(attributes.c_cflag, CRTSCTS, wanted.hardFlowControl);
  setFlag(attributes.c_iflag, IGNPAR, true);
  if (!setStopBits(attributes.c_cflag, wanted.stopBits)) return false;
  setFlag(attributes.c_lflag, ISIG | ICANON | ECHO, false);
  return true;
}

int basic_portbuf<char>::waitFor(short events) const {
  struct pollfd waiting = {fd, events, 0};
  for (int signals = 0; signals < SIGNAL_STORM; ++signals) {
    const int ready = ::poll(&waiting, 1, readTimeout);
    if (ready != -1 || errno != EINTR) return ready;
  }
  return waitUndisturbed(waiting, readTimeout);
}

bool basic_portbuf<char>::isAvailable() {
  const int ready = waitFor(POLLIN);
  deadEnd = ready == -1 || (ready == 0 && readTimeout == 0);
  return ready > 0;
}

void basic_portbuf<char>::interruptReads(bool on) { interrupted = on; }

void basic_portbuf<char>::discardInput() {
  char* const readArea = buffer + PUTBACK_SIZE;
  setg(readArea, readArea, readArea);
  if (fd >= 0) ::tcflush(fd, TCIFLUSH);
}

bool basic_portbuf<char>::isTerminal() const { return fd >= 0 && ::isatty(fd) == 1; }

basic_portbuf<char>::int_type basic_portbuf<char>::underflow() {
  if (gptr() < egptr()) return signExtended(*gptr());
  if (fd < 0 || interrupted) {
    deadEnd = true;
    return traits_type::eof();
  }
  if (!isAvailable()) return traits_type::eof();
  char* const readArea = buffer + PUTBACK_SIZE;
  const std::size_t kept = std::min(PUTBACK_SIZE, static_cast<std::size_t>(gptr() - eback()));
  std::memmove(readArea - kept, gptr() - kept, kept);
  const ssize_t count = ::read(fd, readArea, READ_SIZE);
  if (count <= 0) {
    deadEnd = true;
    return traits_type::eof();
  }
  setg(readArea - kept, readArea, readArea + count);
  return signExtended(*gptr());
}

std::streamsize basic_portbuf<char>::xsputn(const char* s, std::streamsize n) {
  if (fd == -1) return 0;
  const int ready = waitFor(POLLOUT);
  if (ready == 0) errno = EAGAIN;
  const ssize_t written = ready > 0 ? ::write(fd, s, static_cast<std::size_t>(n)) : -1;
  if (written <= 0) std::perror("basic_portbuf::write");
  return written;
}

basic_portbuf<char>::int_type basic_portbuf<char>::overflow(int_type c) {
  if (fd == -1) return traits_type::eq_int_type(c, traits_type::eof()) ? 0 : c;
  if (traits_type::eq_int_type(c, traits_type::eof())) {
    ::close(fd);
    fd = -1;
    usable = false;
    return traits_type::eof();
  }
  const char character = traits_type::to_char_type(c);
  [[maybe_unused]] const ssize_t written = ::write(fd, &character, 1);
  return c;
}

}  // namespace kavTBX
