#include "tarvolink/port/basic_portbuf.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <utility>

namespace kavTBX {

namespace {

/// The speed constant for `baudRate`; B0, with a message, for any other.
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
    control &= PARODD;  // drops the rest of the word, on purpose: see `cPortSetting::parity`
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

using cClock = std::chrono::steady_clock;

// A wait that a signal interrupts starts anew, with its whole time-out. A host's timer that is
// faster than the time-out would make it endless.
constexpr int MAX_INTERRUPTED_WAITS = 16;

/// Waits until `end` with all signals blocked. ppoll(2) restores the mask itself: no way out leaves
/// the host's thread deaf to signals.
int waitWithSignalsBlocked(struct pollfd& waiting, cClock::time_point end) {
  sigset_t all;
  sigfillset(&all);
  const auto left = std::max(end - cClock::now(), cClock::duration::zero());
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
  const std::chrono::nanoseconds rest = left - seconds;
  const struct timespec timeout = {seconds.count(), rest.count()};
  return ::ppoll(&waiting, 1, &timeout, &all);
}

/// What `underflow` returns for a character: not traits_type::to_int_type, see there.
int signExtended(char c) { return static_cast<signed char>(c); }

}  // namespace

basic_portbuf<char>::basic_portbuf(std::string device, boost::shared_ptr<cPortSetting> setting)
    : setting(setting ? setting : boost::shared_ptr<cPortSetting>(new cPortSetting)) {
  setupSelf(std::move(device));
}

basic_portbuf<char>::basic_portbuf(int terminal, std::string devicePath,
                                   boost::shared_ptr<cPortSetting> givenSetting)
    : fd(terminal), device(std::move(devicePath)), setting(givenSetting) {
  usable = ::tcgetattr(fd, &savedAttributes) == 0;
}

basic_portbuf<char>::~basic_portbuf() {
  if (fd > 0) ::close(fd);
}

void basic_portbuf<char>::setupSelf(std::string path) {
  if (fd > 0) ::close(fd);
  fd = -1;
  discardInput();
  usable = false;
  device = std::move(path);
  // It may throw, and nothing closes the descriptor of a constructor that failed.
  const boost::shared_ptr<cPortSetting> copy(new cPortSetting(*setting));
  fd = ::open(device.c_str(), O_RDWR, 0);
  if (fd < 0) {
    std::perror("basic_portbuf::c'tor");
    return;
  }
  // Otherwise a child of the host would keep the port, and with it the sensor, busy.
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

bool basic_portbuf<char>::termSetup(boost::shared_ptr<cPortSetting> newSetting) {
  if (!usable) return false;
  ::tcflush(fd, TCIOFLUSH);  // bytes of the old settings are garbage under the new ones
  struct termios attributes = savedAttributes;
  return applySetting(*newSetting, attributes) && ::tcsetattr(fd, TCSADRAIN, &attributes) == 0;
}

bool basic_portbuf<char>::applySetting(const cPortSetting& newSetting,
                                       struct termios& attributes) const {
  setFlag(attributes.c_oflag, OPOST, false);
  ::cfsetspeed(&attributes, toSpeed(newSetting.baudRate));
  if (!setCharLength(attributes.c_cflag, newSetting.charLength)) return false;
  setFlag(attributes.c_iflag, BRKINT | ISTRIP | ICRNL, false);
  setFlag(attributes.c_iflag, IXON, newSetting.softFlowControl);
  setParity(attributes.c_cflag, newSetting.parity);
  setFlag(attributes.c_cflag, CRTSCTS, newSetting.hardFlowControl);
  setFlag(attributes.c_iflag, IGNPAR, true);
  if (!setStopBits(attributes.c_cflag, newSetting.stopBits)) return false;
  setFlag(attributes.c_lflag, ISIG | ICANON | ECHO, false);
  return true;
}

int basic_portbuf<char>::waitFor(short events) const {
  struct pollfd waiting = {fd, events, 0};
  const auto end = cClock::now() + std::chrono::milliseconds(readTimeout);
  int signals = 0;
  while (readTimeout < 0 || signals++ < MAX_INTERRUPTED_WAITS) {
    const int ready = ::poll(&waiting, 1, readTimeout);
    if (ready != -1 || errno != EINTR) return ready;
  }
  return waitWithSignalsBlocked(waiting, end);
}

bool basic_portbuf<char>::isAvailable() {
  const int ready = waitFor(POLLIN);
  exhausted = ready == -1 || (ready == 0 && readTimeout == 0);
  return ready > 0;
}

void basic_portbuf<char>::interruptReads(bool on) { interrupted = on; }

void basic_portbuf<char>::discardInput() {
  char* const readArea = buffer + PUTBACK_SIZE;
  setg(readArea, readArea, readArea);
  if (fd >= 0) ::tcflush(fd, TCIFLUSH);
}

bool basic_portbuf<char>::isWritable() const {
  struct pollfd waiting = {fd, POLLOUT, 0};
  return ::poll(&waiting, 1, 0) > 0 && waiting.revents == POLLOUT;
}

bool basic_portbuf<char>::isTerminal() const { return fd >= 0 && ::isatty(fd) == 1; }

basic_portbuf<char>::int_type basic_portbuf<char>::underflow() {
  if (gptr() < egptr()) return signExtended(*gptr());
  if (fd < 0 || interrupted) {
    exhausted = true;
    return traits_type::eof();
  }
  if (!isAvailable()) return traits_type::eof();
  char* const readArea = buffer + PUTBACK_SIZE;
  // The characters before the read area serve sungetc(), also where two reads meet.
  const std::size_t kept = std::min(PUTBACK_SIZE, static_cast<std::size_t>(gptr() - eback()));
  std::memmove(readArea - kept, gptr() - kept, kept);
  const ssize_t count = ::read(fd, readArea, READ_SIZE);
  if (count <= 0) {
    exhausted = true;
    return traits_type::eof();
  }
  setg(readArea - kept, readArea, readArea + count);
  return signExtended(*gptr());
}

std::streamsize basic_portbuf<char>::xsputn(const char* s, std::streamsize n) {
  if (fd == -1) return 0;
  const int ready = waitFor(POLLOUT);
  if (ready == 0) errno = EAGAIN;  // poll(2) sets none for a time-out, and the message shows it
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
