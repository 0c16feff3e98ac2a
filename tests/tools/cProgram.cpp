#include "tests/tools/cProgram.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace {

/// In the child of a process with threads: system calls only. Signals are as a shell gives them,
/// whatever the test run itself ignores or blocks.
[[noreturn]] void become(const std::vector<char*>& words) {
  for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGPIPE, SIGTSTP, SIGQUIT}) {
    std::signal(number, SIG_DFL);
  }
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  execv(words[0], words.data());
  _exit(127);
}

void take(int& fd, std::string& text) {
  std::array<char, 65536> buffer;
  const ssize_t got = read(fd, buffer.data(), buffer.size());
  if (got <= 0) close(std::exchange(fd, -1));
  if (got > 0) text.append(buffer.data(), static_cast<std::size_t>(got));
}

}  // namespace

cProgram::cProgram(const std::vector<std::string>& arguments, const cStart& start) {
  std::vector<std::string> line{"/usr/bin/env", "TARVOLINK_DEVICES="};  // not this machine's
  line.insert(line.end(), start.environment.begin(), start.environment.end());
  line.push_back(start.path);
  line.insert(line.end(), arguments.begin(), arguments.end());
  std::vector<char*> words;
  for (std::string& word : line) words.push_back(word.data());
  words.push_back(nullptr);

  if (start.isOnTerminal) {
    const winsize size{24, 80, 0, 0};
    pid = forkpty(&outputFd, nullptr, nullptr, &size);
    if (pid == 0) become(words);
    fcntl(outputFd, F_SETFD, FD_CLOEXEC);
  } else {
    std::array<int, 2> out{-1, -1}, err{-1, -1};
    if (pipe2(out.data(), O_CLOEXEC) == 0 && pipe2(err.data(), O_CLOEXEC) == 0) pid = fork();
    if (pid == 0) {
      dup2(open("/dev/null", O_RDONLY | O_CLOEXEC), STDIN_FILENO);
      dup2(out[1], STDOUT_FILENO);
      dup2(err[1], STDERR_FILENO);
      become(words);
    }
    close(out[1]);
    close(err[1]);
    outputFd = out[0];
    errorFd = err[0];
  }
  if (pid < 0) throw std::runtime_error("cannot start " + start.path);
}

cProgram::~cProgram() {
  if (pid > 0) {
    kill(pid, SIGKILL);
    waitpid(pid, nullptr, 0);
  }
  for (const int fd : {outputFd, errorFd}) close(fd);
}

std::string cProgram::readLine() {
  const std::size_t begin = seen;
  waitFor("\n");
  return output.substr(begin, seen - begin - 1);
}

void cProgram::waitFor(const std::string& text) {
  const auto hasCome = [&] { return output.find(text, seen) != std::string::npos; };
  pump(hasCome, "\"" + text + "\" did not come");
  seen = output.find(text, seen) + text.size();
}

void cProgram::waitForError(const std::string& text) {
  const auto isSaid = [&] { return errors.find(text) != std::string::npos; };
  pump(isSaid, "\"" + text + "\" was not said");
}

void cProgram::closeOutput() { close(std::exchange(outputFd, -1)); }

void cProgram::signal(int number) const { kill(pid, number); }

int cProgram::wait() {
  pump([&] { return outputFd < 0 && errorFd < 0; }, "it does not end");
  int status = 0;
  waitpid(pid, &status, 0);
  pid = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

void cProgram::type(const std::string& keys) const {
  EXPECT_EQ(write(outputFd, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
}

termios cProgram::getModes() {
  tcgetattr(outputFd, &modes);
  return modes;
}

void cProgram::pump(const std::function<bool()>& isDone, const std::string& complaint) {
  using cClock = std::chrono::steady_clock;
  const auto deadline = cClock::now() + DEADLINE;
  while (!isDone()) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - cClock::now()).count();
    if (left <= 0 || (outputFd < 0 && errorFd < 0)) {
      throw std::runtime_error(complaint + "; output: " + output.substr(seen) +
                               "; errors: " + errors);
    }
    std::array<pollfd, 2> sources{{{outputFd, POLLIN, 0}, {errorFd, POLLIN, 0}}};
    poll(sources.data(), sources.size(), static_cast<int>(left));
    if (sources[0].revents != 0) take(outputFd, output);
    getModes();  // the end of a session may reset them
    if (sources[1].revents != 0) take(errorFd, errors);
  }
}

cResult runProgram(const std::vector<std::string>& arguments, const cStart& start) {
  cProgram program(arguments, start);
  const int status = program.wait();
  return {status, program.getOutput(), program.getErrors()};
}

cResult runAsNobody(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), {"--reuid=65534", "--regid=65534", "--clear-groups",
                                       "--inh-caps=+dac_read_search",
                                       "--ambient-caps=+dac_read_search", PROGRAM_PATH});
  return runProgram(arguments, {"/usr/bin/setpriv"});
}

std::vector<std::string> linesOf(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

testing::AssertionResult holds(const std::string& text, const std::string& part) {
  if (text.find(part) != std::string::npos) return testing::AssertionSuccess();
  return testing::AssertionFailure() << "no \"" << part << "\" in: " << text;
}
