#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <functional>
#include <list>
#include <mutex>
#include <thread>

namespace tool {

/// Ends the program well on SIGINT, SIGTERM and SIGHUP.
///
/// A signal sets `isRequested()`; the command then has `GRACE` to stop the sensor and return,
/// after which the process ends itself with status 0 whatever the sensor does. While a
/// `cAtOnce` lives there is nothing to be stopped well, and a signal ends the process there
/// and then. Either way what the living `cFarewell`s ask for is done first. A signal that the
/// caller had set to be ignored (nohup) stays ignored.
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

  /// Asks for the end as a signal does. Any thread.
  void request();

  /// Waits for a signal. Any thread.
  void wait();

  /// Waits for a signal, `timeOut` at most; whether one came. Any thread.
  bool waitFor(std::chrono::milliseconds timeOut);

  /// While it lives a signal ends the process at once. One at a time.
  class cAtOnce {
   public:
    explicit cAtOnce(cStop& owner) : stop(owner) { stop.setAtOnce(true); }
    cAtOnce(const cAtOnce&) = delete;
    cAtOnce& operator=(const cAtOnce&) = delete;
    ~cAtOnce() { stop.setAtOnce(false); }

   private:
    cStop& stop;
  };

  /// Something to be done before the process ends without returning from where it is: called in
  /// another thread, the latest made first. It must be safe beside whatever the process may be
  /// doing meanwhile, and make no cFarewell, cAtOnce nor wait here.
  class cFarewell {
   public:
    cFarewell(cStop& owner, std::function<void()> act);
    cFarewell(const cFarewell&) = delete;
    cFarewell& operator=(const cFarewell&) = delete;
    ~cFarewell();

   private:
    cStop& stop;
    std::list<std::function<void()>>::iterator place;
  };

 private:
  static constexpr std::chrono::milliseconds GRACE{2500};  // gone within 3 s, with a margin

  void watch();
  bool isForUs(const siginfo_t& signal) const;
  void setAtOnce(bool on);
  void endWithinGrace();

  sigset_t signals;
  std::atomic<bool> requested{false};
  std::mutex mutex;                              // goes with changed
  std::condition_variable changed;               // requested, or one of those below
  bool atOnce = false;                           // under mutex
  bool finished = false;                         // under mutex
  std::list<std::function<void()>> farewells{};  // under mutex
  std::thread watcher;  // the only thread that takes the signals; last, it uses all the others
};

}  // namespace tool
