#pragma once

namespace tool {

/// Holds back what the process says on standard error and standard output while a picture covers
/// that terminal, and says it afterwards. Up to 64 KiB, the first; nothing waits for room.
class cHeldMessages {
 public:
  /// Begins to hold, if standard error is a terminal; else messages go on as they did.
  void hold();

  /// Ends holding and says what was held. Only calls that a signal handler may make.
  void say();

 private:
  int real = -1;    // standard error as it was; -1 while nothing is held
  int reader = -1;  // of the pipe that holds
};

}  // namespace tool
