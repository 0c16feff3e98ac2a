#pragma once

#include <termios.h>

#include <atomic>
#include <boost/shared_ptr.hpp>
#include <streambuf>
#include <string>

#include "tarvolink/export.h"
#include "tarvolink/port/cPortSetting.h"

namespace kavTBX {

template <typename CharT>
class basic_portbuf;

/// A stream buffer over an open tty: raw mode, reads with a time-out, unbuffered writes.
///
/// It has three states: not open (descriptor -1); open but unusable, because its settings could not
/// be read or applied (reads and writes still reach the device, `termSetup` refuses); open and
/// usable. Another device needs another object. A bad device throws nothing; messages go to
/// standard error.
///
/// One caller at a time, for all operations together, since nothing is locked; only
/// `interruptReads`, `isInterrupted` and `isWritable` are for any thread. A read(2) takes at most
/// 12 characters, after a poll(2), so that a silent device costs one time-out and never blocks.
/// Output is not buffered: a block is one write(2) after a poll(2), a character one write(2) of 1
/// byte.
template <>
class TARVOLINK_API basic_portbuf<char> : public std::basic_streambuf<char> {
 public:
  /// Opens `device` (open(2), O_RDWR; then FD_CLOEXEC) and applies `setting`, or the default
  /// `cPortSetting` if it is empty. Keeps the setting. Failure: see the class.
  basic_portbuf(std::string device, boost::shared_ptr<cPortSetting> setting);
  basic_portbuf(const basic_portbuf&) = delete;
  basic_portbuf& operator=(const basic_portbuf&) = delete;

  /// Closes the device, which stays in raw mode.
  ~basic_portbuf() override;

  /// Stores `path` and opens that device; the constructor's second half. Closes a device that is
  /// already open and discards what it had sent. On failure the buffer is not open or unusable, see
  /// the class, with the reason on standard error unless tcsetattr failed.
  void setupSelf(std::string path);

  /// Puts the open device into raw mode with `setting`, starting from the attributes that it had
  /// when it was opened; flushes both directions first (tcflush, cfsetspeed, tcsetattr with
  /// TCSADRAIN). True on success. False: the buffer is not usable; the character length or the
  /// number of stop bits is not supported (message on standard error); or tcsetattr failed (errno).
  /// An unknown speed prints a message and is set as 0, which does not count as a failure.
  /// `setting` must not be empty (assertion); it is not kept.
  bool termSetup(boost::shared_ptr<cPortSetting> setting);

  /// Waits for input up to `readTimeout` (poll(2)). True: readable. False: time-out, or poll
  /// failed. A signal restarts the wait with the whole time-out; after 16 of them the thread blocks
  /// all signals for what is left of the time-out, counted from the beginning. An endless wait is
  /// always restarted and never blocks signals.
  bool isAvailable();

  /// With true, reads that find no character in the buffer fail at once; with false they wait
  /// again. A read that is already waiting ends by its own time-out. Any thread.
  void interruptReads(bool on);

  /// Whether reads fail at once now. Any thread.
  bool isInterrupted() const { return interrupted; }

  /// Discards what was received but not read, here and in the system (tcflush).
  void discardInput();

  /// True if the last read failed without waiting and the next would too: the device is closed or
  /// hung up, read(2) failed, reads are interrupted, or the time-out is 0. A caller that reads
  /// again at once would spin.
  bool isExhausted() const { return exhausted; }

  /// True when a block would be written at once: there is room for it, and the device is neither
  /// closed nor hung up (poll(2) without a wait). Any thread.
  bool isWritable() const;

  /// True while the descriptor is open and a terminal (isatty(3)).
  bool isTerminal() const;

  /// The path of the device.
  const std::string& getDevice() const { return device; }

  /// The setting given at construction; never empty. `termSetup` does not replace it.
  boost::shared_ptr<cPortSetting> getSetting() const { return setting; }

 protected:
  /// For a derived class that opens the device itself, with flags of its own: takes over
  /// `terminal`, an open descriptor on the tty `device`, and keeps `setting` (not empty), which
  /// `termSetup` is still to apply. Prints nothing when tcgetattr fails: the buffer is unusable
  /// then.
  basic_portbuf(int terminal, std::string device, boost::shared_ptr<cPortSetting> setting);

  /// The open descriptor; -1 when closed.
  int getDescriptor() const { return fd; }

  /// The next character, without advancing; reads up to 12 if none is left. End of file: time-out,
  /// or see `isExhausted`. The character is sign-extended, so that a byte 0xFF that begins a read
  /// looks like end of file.
  int_type underflow() override;

  /// One write(2) of `n` characters, neither repeated nor completed; returns its result, 0 when
  /// closed. Returns -1 without a write if the device reports no room (poll(2)) for a whole
  /// `readTimeout`: a far end that has stopped reading delays a command no longer than that. A
  /// block larger than the room, such as 100 kB, waits without limit for the far end to read.
  std::streamsize xsputn(const char* s, std::streamsize n) override;

  /// Writes one character; returns `c`, even if the write failed. Has no time-out: on a full line
  /// it waits without limit. End of file closes the device and is returned. When closed: returns
  /// `c`, or 0 for end of file.
  int_type overflow(int_type c) override;

 private:
  static constexpr std::size_t PUTBACK_SIZE = 4;
  static constexpr std::size_t READ_SIZE = 12;

  int waitFor(short events) const;
  bool applySetting(const cPortSetting& newSetting, struct termios& attributes) const;

  bool usable = false;
  int fd = -1;

 public:
  /// Milliseconds that a read waits for input and a block for room; 2500 after opening, below 0
  /// without limit. Set it only while no thread reads or writes.
  int readTimeout = 2500;

 private:
  std::string device;
  char buffer[PUTBACK_SIZE + READ_SIZE] = {};
  boost::shared_ptr<cPortSetting> setting;
  struct termios savedAttributes = {};
  bool exhausted = false;
  std::atomic<bool> interrupted{false};
};

}  // namespace kavTBX
