#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

#include "tools/cStatusLine.h"
#include "tools/cStop.h"
#include "tools/cWatchedPort.h"

namespace tool {

/// The status line of a search: a clock of its own keeps it moving while the search waits. Gone
/// with this, also when `stop` ends the process.
class cSearchProgress {
 public:
  /// A search on `watched` that takes `most` seconds at most.
  cSearchProgress(const cWatchedPort& watched, double most, cStop& stop);
  cSearchProgress(const cSearchProgress&) = delete;
  cSearchProgress& operator=(const cSearchProgress&) = delete;
  ~cSearchProgress();

 private:
  using cClock = std::chrono::steady_clock;

  void keepShowing();
  void end();
  std::string getText() const;

  const cWatchedPort& port;
  const double mostSeconds;
  const cClock::time_point start = cClock::now();
  cStatusLine line;
  std::mutex mutex;
  std::condition_variable changed;  // isOver
  bool isOver = false;              // under mutex
  const cStop::cFarewell farewell;  // uses all above
  std::thread shower;               // too
};

}  // namespace tool
