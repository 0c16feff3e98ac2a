#ifndef TARVOLINK_TOOLS_CPORT_H
#define TARVOLINK_TOOLS_CPORT_H

#include <string>

namespace tool {

/// The program's own descriptor on a tty, held while the library drives the port through
/// another: the device is checked before anything is sent, and the line does not hang up in
/// between.
class cPort {
 public:
  /// Opens the tty at `path` without blocking and without becoming its session's leader.
  /// Throws `cFailure` when it is missing, may not be opened, is busy or is no terminal.
  explicit cPort(const std::string& path);
  cPort(const cPort&) = delete;
  cPort& operator=(const cPort&) = delete;
  ~cPort();

  /// Gives back the controlling terminal that the library's open(2) has made of the port in a
  /// process that leads a session and had none (setsid, a container's first process). Else a
  /// pulled cable would end the process by SIGHUP. Call it right after that open.
  void giveBackTerminal() const;

 private:
  const bool hadTerminal;
  const int fd;
};

}  // namespace tool

#endif
