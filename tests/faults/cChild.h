#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>

#include "tests/faults/cFaultRig.h"

/// A test in a process of its own, which may end by the one assertion that is meant: an answer of
/// SCIP 1.x with another number of points than asked for. Make it when there is no other thread.
class cChild {
 public:
  explicit cChild(const std::function<void()>& test) : child(fork()) {
    if (child != 0) return;
    for (const int fd : {STDOUT_FILENO, STDERR_FILENO}) dup2(fileno(output.get()), fd);
    test();
    std::fflush(nullptr);
    std::_Exit(testing::Test::HasFailure() ? FAILED : outcome);
  }
  ~cChild() {
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
  }

  /// Waits for the end, and expects no failed test and no other end than the one that is meant.
  /// @return what the child set `outcome` to, 0 to 99; -1 if it did not run to its end
  int expectGoodEnd() const {
    siginfo_t end = {};
    waitid(P_PID, static_cast<id_t>(child), &end, WEXITED | WNOWAIT);
    std::string text(1 << 16, '\0');
    std::rewind(output.get());
    text.resize(std::fread(text.data(), 1, text.size(), output.get()));
    const bool isMeant = text.find("px != 0", text.find("mixed response? (ret:")) != text.npos;
    if (end.si_code != CLD_EXITED && end.si_status == SIGABRT && isMeant) return -1;
    EXPECT_TRUE(end.si_code == CLD_EXITED && end.si_status < FAILED) << end.si_status << text;
    return end.si_status;
  }

  static inline int outcome = 0;

 private:
  static constexpr int FAILED = 100;

  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> output{std::tmpfile(), std::fclose};
  const pid_t child;
};

/// Runs a test in both dialects: that of SCIP 1.x in a process of its own, which may be ended.
inline void inBothDialects(const std::function<void(eSimDialect)>& test) {
  cChild([&] { test(SCIP1); }).expectGoodEnd();
  test(SCIP2);
}
