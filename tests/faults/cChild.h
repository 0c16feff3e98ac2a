#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>

#include "tests/faults/cFaultRig.h"

/// A test in a process of its own, which may end by the one assertion that is meant: an answer of
/// SCIP 1.x with another number of points than asked for. Make it when there is no other thread.
class cChild {
 public:
  explicit cChild(const std::function<void()>& test) : said(std::tmpfile()), child(fork()) {
    if (child != 0) return;
    dup2(fileno(said), STDOUT_FILENO);
    dup2(fileno(said), STDERR_FILENO);
    test();
    std::fflush(nullptr);
    std::_Exit(testing::Test::HasFailure() ? FAILED : outcome);
  }
  ~cChild() {
    signal(SIGKILL);
    waitpid(child, nullptr, 0);
    std::fclose(said);
  }
  cChild(const cChild&) = delete;
  cChild& operator=(const cChild&) = delete;

  /// Waits for the end, and expects no failed test and no other end than the one that is meant.
  /// @return what the child set `outcome` to, 0 to 99; -1 if it did not run to its end
  int expectGoodEnd() const {
    siginfo_t end = {};
    waitid(P_PID, static_cast<id_t>(child), &end, WEXITED | WNOWAIT);
    std::string text(1 << 16, '\0');
    std::rewind(said);
    text.resize(std::fread(text.data(), 1, text.size(), said));
    const auto says = [&](const char* words) { return text.find(words) != std::string::npos; };
    if (end.si_code != CLD_EXITED && end.si_status == SIGABRT && says("mixed response? (ret:") &&
        says("px != 0"))
      return -1;
    EXPECT_TRUE(end.si_code == CLD_EXITED && end.si_status < FAILED) << end.si_status << text;
    return end.si_status;
  }
  void signal(int number) const { kill(child, number); }

  static inline int outcome = 0;

 private:
  static constexpr int FAILED = 100;

  std::FILE* const said;
  const pid_t child;
};

/// Runs a test of that dialect: in a process of its own if it may be ended.
inline void runTest(eSimDialect dialect, const std::function<void()>& test) {
  if (dialect == eSimDialect::SCIP2) return test();
  cChild(test).expectGoodEnd();
}
