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

/// A stream buffer over an open tty: raw mode, reads that wait with a time-out, writes that
/// go straight through.
///
/// Three states: not open (descriptor -1), open but unusable (its settings could not be
/// read or made: reads and writes still reach the device, `termSetup` refuses), open and
/// usable. A new device means a new object. Nothing is thrown for a bad device; complaints
/// go to standard error.
///
/// Nothing is locked: one caller at a time, for all operations together; only `interruptReads` and
/// `isInterrupted` are for any thread. Input is taken 12 characters at
/// most a read(2), each after a poll(2), so that a silent device costs one time-out and never a
/// blocked read. Output is never buffered: a block is one write(2) after a poll(2), a character one
/// of 1 byte.
template <>
class TARVOLINK_API basic_portbuf<char> : public std::basic_streambuf<char> {
 public:
  /// Opens `device` (open(2), O_RDWR; then FD_CLOEXEC) and applies `setting`, or the default
  /// `cPortSetting` when it is empty. The setting is kept. See the class for failure.
  basic_portbuf(std::string device, boost::shared_ptr<cPortSetting> setting);
  basic_portbuf(const basic_portbuf&) = delete;
  basic_portbuf& operator=(const basic_portbuf&) = delete;

  /// Closes the device, which stays in raw mode.
  ~basic_portbuf() override;

  /// Stores the path and opens the device; the constructor's second half. A device that is open
  /// already is closed first, and what it had sent is forgotten. Failure: the buffer is not open
  /// or unusable, see the class; standard error tells why, but for tcsetattr's.
  void setupSelf(std::string device);

  /// Puts the open device into raw mode with `setting`, starting from the attributes that it had
  /// when it was opened; flushes both directions first (tcflush, cfsetspeed, tcsetattr with
  /// TCSADRAIN). True on success. False: the buffer is not usable; a character length or a number
  /// of stop bits is not offered, which standard error tells; or tcsetattr failed, which only errno
  /// tells. An unknown speed is complained of and set as 0, which is no failure. `setting` must not
  /// be empty (assertion); it is not kept.
  bool termSetup(boost::shared_ptr<cPortSetting> setting);

  /// Waits for input up to `readTimeout` (poll(2), begun anew after a signal; after the 16th with
  /// all signals blocked). True: readable. False: the time is over, or poll failed.
  bool isAvailable();

  /// Makes reads that find no character waiting in the buffer end at once (true), or wait again
  /// (false). One that waits already ends by its own time-out. Any thread.
  void interruptReads(bool on);

  /// Whether reads are interrupted now. Any thread.
  bool isInterrupted() const { return interrupted; }

  /// Forgets what was received and not read yet, here and in the system (tcflush).
  void discardInput();

  /// True when the last read failed and the next would not wait for input either: the device is
  /// closed or hung up, read(2) failed, reads were interrupted, or the time-out is 0. Reading again
  /// at once would spin.
  bool isDeadEnd() const { return deadEnd; }

  /// True while the descriptor is open and a terminal (isatty(3)).
  bool isTerminal() const;

  /// The path given at construction.
  const std::string& getDevice() const { return device; }

  /// The setting given at construction; never empty. `termSetup` does not replace it.
  boost::shared_ptr<cPortSetting> getSetting() const { return setting; }

 protected:
  /// The next character without advancing, reading up to 12 more if none is left; end of
  /// file on a time-out. Comes back sign-extended, so that a byte 0xFF that begins a read
  /// looks like end of file.
  int_type underflow() override;

  /// One write(2) of `n` characters, neither repeated nor completed; its result, 0 when closed. -1
  /// without a write when the device took nothing for a whole read time-out (poll(2)): a far end
  /// that has stopped reading must not hold the writer for ever.
  std::streamsize xsputn(const char* s, std::streamsize n) override;

  /// Writes one character, without a time-out; its result is `c`, also when the write failed.
  /// Writing end of file closes the device and gives end of file. When closed: `c`, and 0 for end
  /// of file.
  int_type overflow(int_type c) override;

 private:
  static constexpr std::size_t PUTBACK_SIZE = 4;
  static constexpr std::size_t READ_SIZE = 12;

  int waitFor(short events) const;
  bool applySetting(const cPortSetting& wanted, struct termios& attributes) const;

  bool usable = false;
  int fd = -1;

 public:
  /// Milliseconds that a read waits for input, and a block for room: 2500 once opened. Set it only
  /// while nobody reads.
  int readTimeout = 2500;

 private:
  std::string device;
  char buffer[PUTBACK_SIZE + READ_SIZE] = {};
  boost::shared_ptr<cPortSetting> setting;
  struct termios savedAttributes = {};
  bool deadEnd = false;
  std::atomic<bool> interrupted{false};
};

}  // namespace kavTBX
