#ifndef TARVOLINK_TOOLS_COUTPUT_H
#define TARVOLINK_TOOLS_COUTPUT_H

#include <string>
#include <string_view>

#include "tools/cStop.h"

namespace tool {

/// Where a command's data goes: standard output, or a file.
///
/// From its construction on, whatever else the process writes to standard output (the library
/// says there that nothing answers) goes to standard error instead, for good. Nothing is
/// buffered: what was written is there even if the process is ended.
class cOutput {
 public:
  /// Opens `file`, emptied; "" is standard output. `ender` tells when to give up a reader who
  /// takes nothing. Throws `cFailure` when it cannot be opened.
  cOutput(const std::string& file, const cStop& ender);
  cOutput(const cOutput&) = delete;
  cOutput& operator=(const cOutput&) = delete;
  ~cOutput();

  /// Writes all of `text`. Once the reader has closed its end (EPIPE, or EIO of a terminal), or
  /// when a stop is requested while the reader takes nothing, the rest is given up: see `isOver`.
  /// Throws `cFailure` on any other error.
  void write(std::string_view text);

  /// True when it is a terminal.
  bool isTerminal() const;

  /// The descriptor that is written to, for what terminals are asked besides. Its owner is this.
  int getDescriptor() const { return fd; }

  /// True when nobody takes the data any more: a normal end for the program.
  bool isOver() const { return over; }

 private:
  bool isHungUp() const;
  bool waitWritable() const;
  [[noreturn]] void fail() const;

  const cStop& stop;
  const std::string name;
  int fd;
  bool over = false;
};

}  // namespace tool

#endif
