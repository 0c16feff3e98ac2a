#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "tools/base/cShutdown.h"
#include "tools/output/cAtomicFile.h"
#include "tools/output/cDescriptor.h"

namespace tool {

/// Where a command's data goes: standard output, or a file.
///
/// From its construction on, whatever else the process writes to standard output goes to standard
/// error instead, for good. Nothing is buffered: what was written is there even if the process is
/// ended. A regular file is written beside the older one, and takes its place when it is finished.
class cOutput {
 public:
  /// Looks whether `file` can be written, and waits for a FIFO's reader; "" is standard output.
  /// `stop` says when to give up a reader who takes nothing. Throws `cFailure` when it cannot, and
  /// for another terminal than that of standard output; what is there is untouched. Throws
  /// `cInterrupted` when `stop` is requested before there is a reader.
  cOutput(const std::string& file, cShutdown& stop);
  cOutput(const cOutput&) = delete;
  cOutput& operator=(const cOutput&) = delete;

  /// Writes all of `text`. Once the reader has closed its end (EPIPE, or EIO of a terminal), which
  /// requests shutdown, or when that is requested while the reader takes nothing, the rest is given
  /// up, and all that comes later. Throws `cFailure` on any other error.
  void write(std::string_view text);

  /// Puts a file in its place; nothing may be written afterwards. Throws `cFailure` when it cannot.
  void finish();

  /// Where a file is until it is finished; "" when there is none.
  std::string getTemporary() const { return file ? file->getName() : ""; }

  /// Leaves an unfinished file there instead of removing it.
  void keepTemporary() {
    if (file) file->keepTemporary();
  }

  /// Removes an unfinished file. Nothing may be written afterwards.
  void discard() {
    if (file) file->discard();
  }

  /// Throws `cFailure` when what is written to is the serial device at `path`.
  void refuseDevice(const std::string& path) const;

  /// Whether nobody will ever read what is written: a closed pipe, a lost terminal.
  bool isReaderGone() const;

  /// True when it is a terminal.
  bool isTerminal() const;

  /// The descriptor that is written to, for what terminals are asked besides. Its owner is this.
  int getDescriptor() const;

 private:
  short waitFor(int milliseconds) const;
  [[noreturn]] void fail() const;

  cShutdown& stop;
  const std::string name;
  const bool isReplacing;
  const cDescriptor direct;  // -1 when a file is to be replaced
  std::unique_ptr<cAtomicFile>
      file;  // from the first write on, or no failed search would leave one
  bool over = false;
};

}  // namespace tool
