#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tarvolink/tarvolink.h"
#include "tarvoscan/cLineEvent.h"
#include "tarvoscan/port/cDescriptor.h"
#include "tarvoscan/port/cWaker.h"

namespace tarvo {

/// What passed over a line at one speed while it was captured. A plain value.
struct cTraffic {
  int lineSpeed = 0;      ///< bits per second
  std::string sent;       ///< the first 4 KiB
  std::string received;   ///< the first 4 KiB
  std::size_t bytes = 0;  ///< received in all
};

/// CLOCK_MONOTONIC in nanoseconds.
std::int64_t monotonicNow();

/// The port under a sensor's conversation: it reads what is there, up to 4 KiB, and no read or
/// write outlasts a deadline, the request to stop or the device. Why a read ended is asked
/// afterwards.
///
/// The driver library's own port takes 12 characters at a time and cannot be woken. One thread.
class cScanPort : public kavTBX::basic_portbuf<char> {
 public:
  using cClock = std::chrono::steady_clock;

  enum class eEnd {
    NONE,     ///< characters came
    SILENCE,  ///< none came until the deadline, or for the longest pause within a record
    WOKEN,    ///< there is work; only before a record's first character
    STOPPED,  ///< the end was asked for
    GONE      ///< the device hung up, or failed
  };

  /// Takes over `terminal`, which `openPort` has opened. `waker` must outlive it.
  cScanPort(cDescriptor terminal, const std::string& device, int lineSpeed, const cWaker& waker);

  /// Whether the line could be set up.
  bool isUsable() const { return isSetUp; }

  /// Changes the line speed (tcsetattr); what waits in either direction is discarded. False: the
  /// device has gone, or refuses.
  bool setSpeed(int lineSpeed);
  int getSpeed() const { return getSetting()->baudRate; }

  /// What is read from now on is a new record: its first character comes before `deadline`, and so
  /// does its end unless characters keep coming, `pause` apart at most, until `end`. With
  /// `isWakeable` work ends the wait for the first character.
  void beginRecord(cClock::time_point deadline, cClock::time_point end, bool isWakeable);

  /// Why the latest read gave no character.
  eEnd getEnd() const { return why; }

  /// When the first character of the record was read: CLOCK_MONOTONIC, nanoseconds. 0: none was.
  std::int64_t getArrival() const { return arrival; }

  /// Reads and forgets until the line was silent for `pause`, `limit` at most.
  void skipUntilSilent(std::chrono::milliseconds pause, std::chrono::milliseconds limit);

  /// Writes `text`, waiting `limit` at most for room. False: it was not written, or in part.
  bool send(std::string_view text, std::chrono::milliseconds limit);

  /// Waits until all that was written has left for the line, `limit` at most, and forgets the rest:
  /// a close(2) would wait for it.
  void drain(std::chrono::milliseconds limit);

  bool isGone() const;
  /// Whether the path leads to another device by now.
  bool isMoved() const;

  /// Reports what passes from now on.
  void setTap(const tLineTap& onLine) { tap = onLine; }

  /// Keeps what passes from now on, by line speed.
  void startCapture() { isCapturing = true; }
  void stopCapture() { isCapturing = false; }
  const std::vector<cTraffic>& getCapture() const { return capture; }

 protected:
  int_type underflow() override;
  std::streamsize xsputn(const char* s, std::streamsize n) override;

 private:
  static constexpr std::size_t READ_SIZE = 4096;  // as much as a tty keeps

  eEnd waitForInput();
  int_type fill();
  void recordReceived(std::string_view text);
  void recordSent(std::string_view text);
  cTraffic& captured();

  const cWaker& waker;
  bool isSetUp;
  char buffer[READ_SIZE];
  cClock::time_point deadline;
  cClock::time_point end;
  bool isWakeable = false;
  eEnd why = eEnd::NONE;
  std::int64_t filled = 0;   // when the buffer was
  std::int64_t arrival = 0;  // 0: no character of the record was read yet
  tLineTap tap;
  bool isCapturing = false;
  std::vector<cTraffic> capture;
};

}  // namespace tarvo
