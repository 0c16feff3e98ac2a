#pragma once

#include <sys/types.h>

#include <functional>

#include "bench/cDescriptor.h"

/// A process of our own that plays the sensors' side, so that this process's own CPU time is the
/// reader's alone. Ended (SIGKILL) and waited for by the destructor.
///
/// Make one only while this process has no other thread: what a fork(2) copies of a lock that
/// another thread holds stays locked.
class cChild {
 public:
  /// Forks; the child runs `body` with its end of a two-way pipe (a socket pair) and then ends.
  /// Throws std::system_error when there is no process or pipe to be had.
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
