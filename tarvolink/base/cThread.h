#pragma once

#include <boost/thread/condition.hpp>
#include <boost/thread/mutex.hpp>
#include <boost/thread/thread.hpp>

#include "tarvolink/export.h"

namespace kavTBX {

/// Owner of one worker thread; a derived class fills in what the thread does.
///
///     constructed --run--> threadInit, then threadFunc again and again
///                 --finalize--> finish flag set, threadFinReq, joined --> destroyed
///
/// Who wakes whom: `run` waits for the worker to have left `threadInit`; `finalize` sets the
/// finish flag, lets `threadFinReq` wake the worker wherever it waits, and joins it.
/// A derived class stops its thread at the start of its own destructor, while its
/// members still live.
///
/// The worker blocks all signals but those of its own faults (SIGABRT, SIGSEGV, ...), so that a
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

  /// Starts the worker; returns once `threadInit` has returned in it. On an object whose
  /// worker runs, has ended or was finalized it does nothing: there is one worker in a life.
  /// Throws boost::thread_resource_error when the system has no thread left
  /// (pthread_create); the object is then as before the call. Any thread but the worker.
  void run();

  /// Stops the worker and waits for it; afterwards no hook runs any more. Returns at once
  /// when there is none (any more). Any thread but the worker.
  void finalize();

 protected:
  /// Hook: runs once before the first `threadFunc`. Worker only.
  virtual void threadInit() = 0;

  /// Hook: the work, called again whenever it returns while the finish flag is clear. Worker only.
  virtual void threadFunc() = 0;

  /// Hook: wakes the worker so that it sees the finish flag. Runs in the stopping thread, also when
  /// the worker never ran or has ended. Any thread but the worker.
  virtual void threadFinReq() = 0;

  /// Whether the worker is to stop. Any thread.
  bool isFinishing();

  /// Tells the worker to stop at its next look at the flag. Any thread.
  void setFinishing();

  /// Whether `run` has started a worker, be it running or ended. Waits for a `run` or `finalize`
  /// under way: any thread but the worker.
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
