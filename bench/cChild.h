#pragma once

#include <sys/types.h>

#include <functional>

#include "bench/cDescriptor.h"

/// A child process for the sensors' side, so that this process's CPU time is the reader's alone.
/// The destructor kills it (SIGKILL) and waits for its end.
///
/// Construct one only while this process has a single thread: after fork(2) a lock that another
/// thread held stays locked in the child.
class cChild {
 public:
  /// Forks; the child runs `body` with its end of a two-way pipe (a socket pair) and then exits.
  /// Throws std::system_error when no process or pipe is available.
  explicit cChild(const std::function<void(int pipe)>& body);
  ~cChild();
  cChild(const cChild&) = delete;
  cChild& operator=(const cChild&) = delete;

  /// This side's end of the pipe.
  int getPipe() const { return pipe.get(); }

 private:
  cDescriptor pipe;
  pid_t child = -1;
};
