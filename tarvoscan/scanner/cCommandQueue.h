#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <string>

#include "tarvoscan/cScanner.h"

namespace tarvo {

/// What a host may ask of a connected sensor.
enum class eCommand { FETCH_STATUS, FETCH_VERSION, LASER_ON, LASER_OFF };

/// A host's command on its way to the reading thread and back.
class cCommand {
 public:
  explicit cCommand(eCommand kind) : kind(kind) {}

  const eCommand kind;

  /// Ends it; a second end is none. Any thread.
  void finish(const cCommandResult& result);
  /// Waits for its end, `timeout` at most. The caller's thread.
  cCommandResult wait(std::chrono::milliseconds timeout);

 private:
  std::mutex mutex;
  std::condition_variable changed;
  bool isFinished = false;  // under mutex
  cCommandResult result;    // under mutex
};

/// Commands that wait for the reading thread. Any thread.
class cCommandQueue {
 public:
  void push(std::shared_ptr<cCommand> command);
  /// The oldest; empty if none waits.
  std::shared_ptr<cCommand> take();
  /// Ends all that wait by `reason`.
  void refuseAll(const std::string& reason);

 private:
  std::mutex mutex;
  std::deque<std::shared_ptr<cCommand>> commands;  // under mutex
};

}  // namespace tarvo
