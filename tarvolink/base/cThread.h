#pragma once

#include <boost/thread/condition.hpp>
#include <boost/thread/mutex.hpp>
#include <boost/thread/thread.hpp>

#include "tarvolink/export.h"

namespace kavTBX {

/// Owns one worker thread; a derived class defines what the thread does.
///
///     constructed --run--> threadInit, then threadFunc again and again
///                 --finalize--> finish flag set, threadFinReq, joined --> destroyed
///
/// Who wakes whom: `run` waits until the worker has left `threadInit`; `finalize` sets the
/// finish flag, has `threadFinReq` wake the worker wherever it waits, and joins it.
/// A derived class stops its thread at the start of its own destructor, while its members are
/// still alive.
///
/// The worker blocks all signals except those of its own faults (SIGABRT, SIGSEGV, ...), so that a
/// host's handlers run in the host's threads.
/// An exception that leaves a hook ends the worker as if the finish flag had been set;
/// it never reaches the host.
class TARVOLINK_API cThread {
 public:
  cThread() = default;
  cThread(const cThread&) = delete;
  cThread& operator=(const cThread&) = delete;

  /// Joins the worker if it is still joinable.
  virtual ~cThread();  // NOLINT(bugprone-exception-escape): see the definition

  /// Starts the worker; returns once `threadInit` has returned in it. Does nothing if the worker
  /// runs, has ended or was finalized: an object starts one worker in its life.
  /// Throws boost::thread_resource_error when the system has no thread left
  /// (pthread_create); the object is then as before the call. Any thread but the worker.
  void run();

  /// Stops the worker and waits for it; no hook runs afterwards. Returns at once if no worker
  /// runs. Any thread but the worker.
  void finalize();

 protected:
  /// Hook: runs once before the first `threadFunc`. Worker only.
  virtual void threadInit() = 0;

  /// Hook: the work, called again whenever it returns while the finish flag is clear. Worker only.
  virtual void threadFunc() = 0;

  /// Hook: wakes the worker so that it sees the finish flag. Runs in the stopping thread, even if
  /// the worker never ran or has ended. Any thread but the worker.
  virtual void threadFinReq() = 0;

  /// Whether the finish flag is set. Any thread.
  bool isFinishing();

  /// Sets the finish flag; the worker stops when it next tests it. Any thread.
  void setFinishing();

  /// Whether `run` has started a worker, which may have ended since. Waits for a `run` or
  /// `finalize` under way. Any thread but the worker.
  bool wasStarted();

 private:
  void start();
  void join();
  void work();
  void announceInitialised();

  boost::condition condition;
  boost::thread* thread = nullptr;
  bool finishing = false;    // under flagMutex
  bool initialised = false;  // under flagMutex, announced by condition
  boost::mutex flagMutex;
  boost::mutex threadMutex;  // serialises run and join; taken before flagMutex
};

}  // namespace kavTBX
