#pragma once

#include <string>

#include "tools/cDescriptor.h"
#include "tools/holders.h"

namespace tool {

/// The program's own descriptor on a tty, held while the library drives the port through
/// another: the device is checked and its line put right before anything is sent, other programs
/// that look are kept off, and the line does not hang up in between.
class cPort {
 public:
  /// Opens the tty at `path` without waiting for a carrier and without making it the process's
  /// terminal, locks it (flock(2)), and sets what the library takes as it finds it: receiver on,
  /// no modem lines, no parity, no translation of line ends, no software flow control. Throws
  /// `cTransientError` when it is missing, may not be opened, is no terminal or another process
  /// has it; nothing was sent or set then.
  explicit cPort(const std::string& path);
  cPort(const cPort&) = delete;
  cPort& operator=(const cPort&) = delete;

  /// Gives back the controlling terminal that the library's open(2) has made of the port in a
  /// process that leads a session and had none (setsid, a container's first process). Else a
  /// pulled cable would end the process by SIGHUP. Call it right after that open.
  void giveBackTerminal() const;

  /// True once the device is gone: unplugged, its driver removed.
  bool isGone() const;

 private:
  void requireFree() const;
  [[noreturn]] void failInUse(const std::vector<cHolder>& holders) const;
  void putRight() const;

  const std::string name;
  const bool hadTerminal;
  const cDescriptor fd;
};

}  // namespace tool
