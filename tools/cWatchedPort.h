#pragma once

#include <chrono>
#include <cstddef>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "tarvolink/tarvolink.h"

namespace tool {

/// What went over a line at one speed. A plain value.
struct cTraffic {
  int speed = 0;              ///< bits per second
  std::string sent{};         ///< the first 4 KiB
  std::string received{};     ///< the first 4 KiB
  std::size_t heard = 0;      ///< characters received in all, also after the last watch
  std::string lastCommand{};  ///< without its tag; "": none since it is watched

  /// True while it is asked in SCIP 1.x.
  bool isOld() const { return lastCommand == "V" || lastCommand == "SCIP2.0"; }
};

/// The library's port on a tty, watched while it looks for a sensor: the library tells of a
/// detection only whether it succeeded, and a second reader would take bytes away from it.
///
/// It listens to a record up to its end or 64 KiB. While it is watched that is ended here when the
/// time for an answer is over, or a device that never stops talking would hold up the search.
class cWatchedPort : public kavTBX::basic_portbuf<char> {
 public:
  using kavTBX::basic_portbuf<char>::basic_portbuf;

  /// What passes from now on belongs to `speed`, with what passed at it before. What is read now
  /// has `patience` to end, as long as the library listens to a silent line before it asks. Any
  /// thread.
  void watch(int speed, std::chrono::milliseconds patience = std::chrono::milliseconds(300));

  /// Looks away: from now on it only counts what is heard. Any thread.
  void ignore();

  /// What passed at the speed that is watched, or was last. Any thread.
  cTraffic getTraffic() const;

  /// What passed at each speed, in the order they were first watched. Any thread.
  std::vector<cTraffic> getAllTraffic() const;

 protected:
  int_type underflow() override;
  std::streamsize xsputn(const char* s, std::streamsize n) override;

 private:
  using cClock = std::chrono::steady_clock;

  void listenUntil(cClock::time_point end);
  void endIfOverdue();
  void noteReceived(std::string_view characters);
  void noteSent(std::string_view characters);

  mutable std::mutex mutex;
  std::vector<cTraffic> traffic;  // under mutex
  std::size_t latest = 0;         // under mutex: the place of the speed that is watched
  bool isWatching = false;        // under mutex
  bool isEnded = false;           // under mutex: reads are, until the next command
  cClock::time_point deadline;    // under mutex: of what is read now
};

}  // namespace tool
