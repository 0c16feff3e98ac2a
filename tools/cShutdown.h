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

/// Shuts the program down on SIGINT, SIGTERM and SIGHUP, when the reader of its output closes its
/// end, and when a time limit is over.
///
/// Each of them sets `isRequested()`; the command then has `GRACE` to stop the sensor and return,
/// after which the process exits whatever the sensor does. While a `cExitImmediately` lives nothing
/// needs to be stopped first, and the process exits immediately. Either way the living `cExitHook`s
/// run before. A signal that the caller had set to be ignored (nohup) stays ignored.
///
/// A signal or a closed reader cuts the command short, and the process dies by that signal (SIGPIPE
/// for the reader), unless the command has said by `expectRequest` that it runs until then: the
/// status is 0 in that case, and when the time limit is over.
///
/// Make one, before the first other thread (they inherit the blocked signals) and before the port
/// is opened.
class cShutdown {
 public:
  cShutdown();
  cShutdown(const cShutdown&) = delete;
  cShutdown& operator=(const cShutdown&) = delete;
  ~cShutdown() { end(); }

  /// True once a shutdown was requested. Any thread.
  bool isRequested() const { return cause != NONE; }

  /// True once a signal or a closed reader has requested what the command did not expect. Any
  /// thread.
  bool isCutShort() const { return cause > NONE && !isExpected; }

  /// Requests shutdown because nobody reads the output any more. Any thread.
  void requestByReader();

  /// Requests shutdown after `seconds`, above 0 and at most 1e9 (timer_create(2)). Once.
  void limitTime(double seconds);

  /// From now on the command runs until a shutdown is requested: that is its normal end. Any
  /// thread.
  void expectRequest() { isExpected = true; }

  /// Waits until a shutdown is requested. Any thread.
  void wait();

  /// Waits until a shutdown is requested, `timeOut` at most; whether one was. Any thread.
  bool waitFor(std::chrono::milliseconds timeOut);

  /// Watches no longer: what comes from now on changes nothing. The signal that has cut the command
  /// short; 0: none.
  int end();

  /// While it lives a request ends the process immediately. One at a time.
  class cExitImmediately {
   public:
    explicit cExitImmediately(cShutdown& stop) : stop(stop) { stop.setImmediate(true); }
    cExitImmediately(const cExitImmediately&) = delete;
    cExitImmediately& operator=(const cExitImmediately&) = delete;
    ~cExitImmediately() { stop.setImmediate(false); }

   private:
    cShutdown& stop;
  };

  /// Something to be done before the process exits without returning from where it is: called in
  /// another thread, the latest made first. It must be safe beside whatever the process may be
  /// doing meanwhile, and make no cExitHook, cExitImmediately nor wait here.
  class cExitHook {
   public:
    cExitHook(cShutdown& stop, std::function<void()> act);
    cExitHook(const cExitHook&) = delete;
    cExitHook& operator=(const cExitHook&) = delete;
    ~cExitHook();

   private:
    cShutdown& stop;
    std::list<std::function<void()>>::iterator place;
  };

 private:
  static constexpr std::chrono::milliseconds GRACE{2500};  // gone within 3 s, with a margin
  static constexpr int NONE = 0;                           // causes; a signal's number otherwise
  static constexpr int TIME_OVER = -1;

  void watch();
  void wakeWatcher();
  void noteCause(const siginfo_t& signal);
  void setImmediate(bool on);
  void shutDown();

  sigset_t signals;
  std::atomic<int> cause{NONE};
  std::atomic<bool> isExpected{false};
  std::mutex mutex;                              // goes with changed
  std::condition_variable changed;               // cause, or one of those below
  bool immediate = false;                        // under mutex
  bool finished = false;                         // under mutex
  std::list<std::function<void()>> exitHooks{};  // under mutex
  std::thread watcher;  // the only thread that takes the signals; last, it uses all the others
};

/// Ends the process by the signal itself, so that its parent sees that: a shell ends its loop by
/// one Ctrl-C (kill(2) under the default disposition). The status is 128 + `signal` where the
/// system does not let a signal end the process, as the first one of a container.
[[noreturn]] void dieBySignal(int signal);

}  // namespace tool
