#include "tests/faults/cChild.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

constexpr int FAILED = 100;

cChild::cChild(const std::function<void()>& test) : said(std::tmpfile()), child(fork()) {
  if (child != 0) return;
  dup2(fileno(said), STDOUT_FILENO);
  dup2(fileno(said), STDERR_FILENO);
  test();
  std::fflush(nullptr);
  std::_Exit(testing::Test::HasFailure() ? FAILED : outcome);
}

cChild::~cChild() {
  if (child > 0) {
    signal(SIGKILL);
    waitpid(child, nullptr, 0);
  }
  std::fclose(said);
}

int cChild::expectGoodEnd() {
  int status = 0;
  waitpid(child, &status, 0);
  child = 0;
  std::string text(1 << 16, '\0');
  std::rewind(said);
  text.resize(std::fread(text.data(), 1, text.size(), said));
  const auto says = [&](const char* words) { return text.find(words) != std::string::npos; };
  if (WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT && says("mixed response? (ret:") &&
      says("px != 0"))
    return -1;
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) < FAILED) << status << ": " << text;
  return WEXITSTATUS(status);
}

void cChild::signal(int number) const { kill(child, number); }

void runTest(eSimDialect dialect, const std::function<void()>& test) {
  if (dialect == eSimDialect::SCIP2) return test();
  cChild(test).expectGoodEnd();
}
