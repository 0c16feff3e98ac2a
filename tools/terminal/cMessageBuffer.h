#pragma once

namespace tool {

/// Holds back what the process writes to standard error and standard output while a picture covers
/// that terminal, and prints it afterwards. Up to 64 KiB, the first; nothing waits for room.
class cMessageBuffer {
 public:
  /// Begins to hold them, if standard error is a terminal; otherwise messages go on as they did.
  void begin();

  /// Ends holding and prints what was held. Only calls that a signal handler may make.
  void flush();

 private:
  int real = -1;    // standard error as it was; -1 while nothing is held
  int reader = -1;  // of the pipe that holds
};

}  // namespace tool
