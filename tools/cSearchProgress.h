#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

#include "tools/cShutdown.h"
#include "tools/cStatusLine.h"
#include "tools/cWatchedPort.h"

namespace tool {

/// The status line of a search: a clock of its own keeps it moving while the search waits. Gone
/// with this, also when `stop` ends the process.
class cSearchProgress {
 public:
  /// A search on `watched` that takes up to `maxSeconds`.
  cSearchProgress(const cWatchedPort& watched, double maxSeconds, cShutdown& stop);
  cSearchProgress(const cSearchProgress&) = delete;
  cSearchProgress& operator=(const cSearchProgress&) = delete;
  ~cSearchProgress();

 private:
  using cClock = std::chrono::steady_clock;

  void displayLoop();
  void end();
  std::string getText() const;

  const cWatchedPort& port;
  const double maxSeconds;
  const cClock::time_point start = cClock::now();
  cStatusLine line;
  std::mutex mutex;
  std::condition_variable changed;      // isOver
  bool isOver = false;                  // under mutex
  const cShutdown::cExitHook exitHook;  // uses all above
  std::thread thread;                   // too
};

}  // namespace tool
