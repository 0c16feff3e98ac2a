#pragma once

#include <chrono>
#include <csignal>
#include <optional>

namespace tool {

/// The program's stop flag, and what sets it: SIGINT, SIGTERM and SIGHUP, a reader of the output
/// that closes its end, and a time limit.
///
/// A signal sets the flag, makes a descriptor readable and interrupts what waits in the kernel
/// (there is no SA_RESTART). The command then cleans up and returns: a scanner stops within a
/// second. A signal that the caller had set to be ignored (nohup) stays ignored.
///
/// A signal or a closed reader cuts the command short, and the process dies by that signal (SIGPIPE
/// for the reader), unless the command has said by `expectRequest` that it runs until then: the
/// status is 0 in that case, and when the time limit is over.
///
/// One in a process, made before the first other thread. The main thread, where a member does not
/// say otherwise.
class cShutdown {
 public:
  /// Throws std::system_error where the system has no descriptor left.
  cShutdown();
  cShutdown(const cShutdown&) = delete;
  cShutdown& operator=(const cShutdown&) = delete;
  ~cShutdown();

  /// True once a shutdown was requested.
  bool isRequested() const;

  /// True once a signal or a closed reader has requested what the command did not expect.
  bool isCutShort() const;

  /// Requests shutdown because nobody reads the output any more.
  void requestByReader();

  /// Requests shutdown after `seconds`, above 0.
  void limitTime(double seconds);

  /// From now on the command runs until a shutdown is requested: that is its normal end.
  void expectRequest() { isExpected = true; }

  /// Waits until a shutdown is requested or `descriptor` is readable (-1: none), `timeOut` at most;
  /// whether a shutdown was requested.
  bool waitFor(std::chrono::milliseconds timeOut, int descriptor = -1) const;

  /// Waits until a shutdown is requested.
  void wait() const;

  /// The signal that has cut the command short; 0: none.
  int getFatalSignal() const;

 private:
  using cClock = std::chrono::steady_clock;

  bool isExpected = false;
  std::optional<cClock::time_point> limit;
};

/// Ends the process by `signal`, as if it had never been handled.
[[noreturn]] void dieBySignal(int signal);

}  // namespace tool
