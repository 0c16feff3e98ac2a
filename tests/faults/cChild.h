#pragma once

#include <sys/types.h>

#include <cstdio>
#include <functional>

#include "sim/tarvosim.h"

/// A test in a process of its own, which may end by the one assertion that is meant: an answer of
/// SCIP 1.x with another number of points than asked for. Make it when there is no other thread.
class cChild {
 public:
  explicit cChild(const std::function<void()>& test);
  ~cChild();  ///< kills it if it runs
  cChild(const cChild&) = delete;
  cChild& operator=(const cChild&) = delete;

  /// Waits for the end, and expects no failed test and no other end than the one that is meant.
  /// @return what the child set `outcome` to, 0 to 99; -1 if it did not run to its end
  int expectGoodEnd();
  void signal(int number) const;

  static inline int outcome = 0;

 private:
  std::FILE* const said;
  pid_t child;
};

/// Runs a test of that dialect: in a process of its own if it may be ended.
void runTest(eSimDialect dialect, const std::function<void()>& test);
