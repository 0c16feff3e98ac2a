#ifndef TARVOLINK_TOOLS_CSTOP_H
#define TARVOLINK_TOOLS_CSTOP_H

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <mutex>
#include <thread>

namespace tool {

/// Ends the program well on SIGINT, SIGTERM and SIGHUP.
///
/// A signal sets `isRequested()`; the command then has `GRACE` to stop the sensor and return,
/// after which the process ends itself with status 0 whatever the sensor does. While a
/// `cAtOnce` lives there is nothing to be stopped well, and a signal ends the process there
/// and then. A signal that the caller had set to be ignored (nohup) stays ignored.
///
/// Make one, before the first other thread (they inherit the blocked signals) and before the
/// port is opened.
class cStop {
 public:
  cStop();
  cStop(const cStop&) = delete;
  cStop& operator=(const cStop&) = delete;
  ~cStop();

  /// True once a signal came. Any thread.
  bool isRequested() const { return requested; }

  /// Waits for a signal. Any thread.
  void wait();

  /// While it lives a signal ends the process at once.
  class cAtOnce {
   public:
    explicit cAtOnce(cStop& owner) : stop(owner) { stop.atOnce = true; }
    cAtOnce(const cAtOnce&) = delete;
    cAtOnce& operator=(const cAtOnce&) = delete;
    ~cAtOnce() { stop.atOnce = false; }

   private:
    cStop& stop;
  };

 private:
  static constexpr std::chrono::milliseconds GRACE{2500};  // gone within 3 s, with a margin

  void watch();
  bool isForUs(const siginfo_t& signal) const;
  void endWithinGrace();

  sigset_t signals;
  std::atomic<bool> requested{false};
  std::atomic<bool> atOnce{false};
  std::mutex mutex;                 // guards finished; goes with changed
  std::condition_variable changed;  // requested or finished
  bool finished = false;
  std::thread watcher;  // the only thread that takes the signals; last, it uses all the others
};

}  // namespace tool

#endif
