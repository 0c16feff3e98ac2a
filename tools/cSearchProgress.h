#ifndef TARVOLINK_TOOLS_CSEARCHPROGRESS_H
#define TARVOLINK_TOOLS_CSEARCHPROGRESS_H

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

#include "tools/cStatusLine.h"
#include "tools/cStop.h"

namespace tool {

/// The status line of a search: a clock of its own keeps it moving while the search waits. Gone
/// with this, also when `stop` ends the process.
class cSearchProgress {
 public:
  /// A search that takes `most` seconds at most.
  cSearchProgress(double most, cStop& stop);
  cSearchProgress(const cSearchProgress&) = delete;
  cSearchProgress& operator=(const cSearchProgress&) = delete;
  ~cSearchProgress();

  /// A detection at `speed` begins.
  void begin(int speed);

  /// So many bytes came when the line was asked at this speed.
  void setHeard(std::size_t bytes);

 private:
  using cClock = std::chrono::steady_clock;

  void keepShowing();
  std::string getText() const;

  const double mostSeconds;
  const cClock::time_point start = cClock::now();
  cStatusLine line;
  const cStop::cFarewell farewell;
  std::mutex mutex;
  std::condition_variable changed;  // any of the fields below, which are under mutex
  int lineSpeed = 0;
  std::size_t heard = 0;
  bool isOver = false;
  std::thread shower;  // last: it uses all the others
};

}  // namespace tool

#endif
