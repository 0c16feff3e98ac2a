#pragma once

#include <csignal>
#include <string>
#include <utility>
#include <vector>

#include "tools/base/cShutdown.h"
#include "tools/output/cOutput.h"

namespace tool {

/// The terminal on standard output, taken over for a picture: alternate screen, no cursor, keys
/// as they are typed (termios(3)). Messages to the terminal are held back meanwhile.
///
/// It is restored whatever ends the program: the destructor, Ctrl-Z (and acquired again after
/// `fg`), signals that kill. Only SIGKILL cannot be helped. One at a time in a
/// process; belongs to one thread.
class cTerminal {
 public:
  /// Takes the terminal that `screen` writes to, once the process is in its foreground. Both
  /// must outlive it.
  cTerminal(cOutput& screen, cShutdown& stop);
  cTerminal(const cTerminal&) = delete;
  cTerminal& operator=(const cTerminal&) = delete;
  ~cTerminal();

  /// Restores the terminal that is acquired, if any. Only calls that a signal handler may make.
  static void restore();

  /// The keys typed since the last call; cursor and function keys are left out. Does not wait,
  /// except that a Ctrl-Z since the last call stops the process in here.
  std::string readKeys();

  /// Shows `lines` from the top; only those that changed are written.
  void show(const std::vector<std::string>& lines);

  /// Shows the next lines on a cleared screen.
  void clear() { shown.clear(); }

 private:
  void handle(int number, void (*handler)(int), int flags);
  void followJobControl();
  void suspend();
  void acquire();
  void waitForForeground() const;

  cOutput& output;
  const cShutdown& stop;
  std::vector<std::string> shown;  // empty: not known
  std::vector<std::pair<int, struct sigaction>> handledBefore;
};

}  // namespace tool
