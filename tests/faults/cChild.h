#pragma once

#include <sys/types.h>

#include <cstdio>
#include <functional>
#include <string>

#include "sim/tarvosim.h"

/// A test's process of its own, which may end by the one assertion that is meant: an answer of
/// SCIP 1.x with another number of points than asked for. Make it when there is no other thread.
class cChild {
 public:
  explicit cChild(const std::function<void()>& test);
  /// Ends it if it has not ended.
  ~cChild();
  cChild(const cChild&) = delete;
  cChild& operator=(const cChild&) = delete;

  /// Waits for the end, and expects no failed test and no other end than the one that is meant.
  /// @return whether it ran to its end, and what it then called itself by setOutcome
  int expectGoodEnd();
  void signal(int number) const;

  static constexpr int DELIBERATE = -1;
  /// In the child: what expectGoodEnd returns there, 0 to 99.
  static inline int outcome = 0;

 private:
  std::string getText() const;

  std::FILE* const said;
  pid_t child;
};

/// Runs a test of that dialect: in a process of its own if it may be ended.
void runTest(eSimDialect dialect, const std::function<void()>& test);
