#include "tarvoscan/port/cScanPort.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <time.h>

#include <algorithm>
#include <boost/make_shared.hpp>
#include <cerrno>
#include <thread>

#include "tarvoscan/port/openPort.h"

namespace tarvo {

namespace {

// Within a record characters come without a pause; USB adapters hold them back for some 16 ms, a
// busy machine for more. A record that pauses for longer has lost its end.
constexpr std::chrono::milliseconds LONGEST_PAUSE{300};

constexpr std::size_t MAX_CAPTURE = 4096;

constexpr std::chrono::milliseconds DRAIN_STEP{2};

int millisecondsUntil(cScanPort::cClock::time_point moment) {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(moment - cScanPort::cClock::now());
  return static_cast<int>(std::clamp<std::int64_t>(left.count(), 0, 3600000));
}

void appendCapped(std::string& text, std::string_view more) {
  text.append(more.substr(0, MAX_CAPTURE - std::min(text.size(), MAX_CAPTURE)));
}

boost::shared_ptr<kavTBX::cPortSetting> settingFor(int lineSpeed) {
  auto setting = boost::make_shared<kavTBX::cPortSetting>();
  setting->baudRate = lineSpeed;
  return setting;
}

}  // namespace

std::int64_t monotonicNow() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return now.tv_sec * std::int64_t{1000000000} + now.tv_nsec;
}

cScanPort::cScanPort(cDescriptor terminal, const std::string& device, int lineSpeed,
                     const cWaker& waker)
    : basic_portbuf(terminal.release(), device, settingFor(lineSpeed)),
      waker(waker),
      isSetUp(termSetup(getSetting())) {
  setg(buffer, buffer, buffer);
}

bool cScanPort::setSpeed(int lineSpeed) {
  getSetting()->baudRate = lineSpeed;
  setg(buffer, buffer, buffer);  // what came at the other speed
  return termSetup(getSetting());
}

void cScanPort::beginRecord(cClock::time_point newDeadline, cClock::time_point newEnd,
                            bool mayBeWoken) {
  deadline = newDeadline;
  end = newEnd;
  isWakeable = mayBeWoken;
  why = eEnd::NONE;
  arrival = gptr() < egptr() ? filled : 0;
}

cScanPort::int_type cScanPort::underflow() {
  if (gptr() < egptr()) return traits_type::to_int_type(*gptr());
  why = waitForInput();
  return why == eEnd::NONE ? fill() : traits_type::eof();
}

cScanPort::eEnd cScanPort::waitForInput() {
  const bool isBegun = arrival != 0;
  for (;;) {
    const auto limit = isBegun ? std::min(end, cClock::now() + LONGEST_PAUSE) : deadline;
    pollfd events[] = {{getDescriptor(), POLLIN, 0},
                       {waker.getStopDescriptor(), POLLIN, 0},
                       {isWakeable && !isBegun ? waker.getWorkDescriptor() : -1, POLLIN, 0}};
    const int ready = poll(events, 3, millisecondsUntil(limit));
    if (ready < 0 && errno != EINTR) return eEnd::GONE;
    if (ready < 0) continue;
    if (events[1].revents != 0) return eEnd::STOPPED;
    if ((events[0].revents & POLLIN) != 0)
      return isBegun && cClock::now() > end ? eEnd::SILENCE : eEnd::NONE;
    if (events[0].revents != 0) return eEnd::GONE;
    if (events[2].revents != 0) return eEnd::WOKEN;
    return eEnd::SILENCE;
  }
}

cScanPort::int_type cScanPort::fill() {
  const ssize_t count = read(getDescriptor(), buffer, sizeof buffer);
  if (count < 0 && (errno == EAGAIN || errno == EINTR)) {
    why = eEnd::SILENCE;  // another reader took it: nobody else should have the port
    return traits_type::eof();
  }
  if (count <= 0) {
    why = eEnd::GONE;
    return traits_type::eof();
  }
  filled = monotonicNow();
  if (arrival == 0) arrival = filled;
  setg(buffer, buffer, buffer + count);
  recordReceived({buffer, static_cast<std::size_t>(count)});
  return traits_type::to_int_type(*gptr());
}

void cScanPort::skipUntilSilent(std::chrono::milliseconds pause, std::chrono::milliseconds limit) {
  const auto last = cClock::now() + limit;
  do {
    setg(buffer, buffer, buffer);
    beginRecord(std::min(cClock::now() + pause, last), last, false);
  } while (!traits_type::eq_int_type(underflow(), traits_type::eof()) && cClock::now() < last);
}

std::streamsize cScanPort::xsputn(const char* s, std::streamsize n) {
  return send({s, static_cast<std::size_t>(n)}, LONGEST_PAUSE) ? n : 0;
}

bool cScanPort::send(std::string_view text, std::chrono::milliseconds limit) {
  const auto last = cClock::now() + limit;
  recordSent(text);
  while (!text.empty()) {
    pollfd room{getDescriptor(), POLLOUT, 0};
    const int ready = poll(&room, 1, millisecondsUntil(last));
    if (ready < 0 && errno == EINTR) continue;
    if (ready <= 0 || (room.revents & POLLOUT) == 0) return false;
    const ssize_t written = write(getDescriptor(), text.data(), text.size());
    if (written < 0 && errno != EINTR && errno != EAGAIN) return false;
    if (written > 0) text.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

void cScanPort::drain(std::chrono::milliseconds limit) {
  const auto last = cClock::now() + limit;
  int waiting = 0;
  while (ioctl(getDescriptor(), TIOCOUTQ, &waiting) == 0 && waiting > 0 && cClock::now() < last) {
    std::this_thread::sleep_for(DRAIN_STEP);
  }
  if (waiting > 0) tcflush(getDescriptor(), TCOFLUSH);
}

bool cScanPort::isGone() const { return isDisconnected(getDescriptor()); }

bool cScanPort::isMoved() const { return isElsewhere(getDevice(), getDescriptor()); }

cTraffic& cScanPort::captured() {
  const int speed = getSpeed();
  const auto known = std::find_if(capture.begin(), capture.end(), [speed](const cTraffic& each) {
    return each.lineSpeed == speed;
  });
  if (known != capture.end()) return *known;
  capture.push_back({speed, {}, {}, 0});
  return capture.back();
}

void cScanPort::recordReceived(std::string_view text) {
  if (tap) tap({getDevice(), getSpeed(), false, filled, text});
  if (!isCapturing) return;
  cTraffic& traffic = captured();
  traffic.bytes += text.size();
  appendCapped(traffic.received, text);
}

void cScanPort::recordSent(std::string_view text) {
  if (tap) tap({getDevice(), getSpeed(), true, monotonicNow(), text});
  if (isCapturing) appendCapped(captured().sent, text);
}

}  // namespace tarvo
