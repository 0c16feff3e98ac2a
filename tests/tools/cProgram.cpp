#include "tests/tools/cProgram.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <sstream>
#include <stdexcept>

namespace {

std::array<int, 2> makePipe() {
  std::array<int, 2> ends;
  if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("pipe2 failed");
  return ends;
}

std::vector<char*> pointersTo(const std::vector<std::string>& words) {
  std::vector<char*> pointers;
  for (const std::string& word : words) pointers.push_back(const_cast<char*>(word.c_str()));
  return pointers;
}

/// Signals as a shell gives them: whatever the test run itself ignores or blocks.
void setAttributes(posix_spawnattr_t& attributes, bool leadsSession) {
  sigset_t none;
  sigset_t restored;
  sigemptyset(&none);
  sigemptyset(&restored);
  for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) sigaddset(&restored, number);
  posix_spawnattr_init(&attributes);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setsigdefault(&attributes, &restored);
  int flags = POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF;
  if (leadsSession) flags |= POSIX_SPAWN_SETSID;
  posix_spawnattr_setflags(&attributes, static_cast<short>(flags));
}

}  // namespace

cProgram::cProgram(const std::vector<std::string>& arguments, const cStart& start) {
  const auto outputPipe = makePipe();
  const auto errorPipe = makePipe();
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, outputPipe[1], STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, errorPipe[1], STDERR_FILENO);
  posix_spawnattr_t attributes;
  setAttributes(attributes, start.leadsSession);

  auto argv = pointersTo(arguments);
  argv.insert(argv.begin(), const_cast<char*>(start.path.c_str()));
  argv.push_back(nullptr);
  auto envp = pointersTo(start.environment);
  envp.push_back(const_cast<char*>("TARVOLINK_DEVICES="));  // not those of this machine
  for (char** entry = environ; *entry != nullptr; ++entry) envp.push_back(*entry);
  envp.push_back(nullptr);
  const int error =
      posix_spawn(&pid, start.path.c_str(), &actions, &attributes, argv.data(), envp.data());
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  close(outputPipe[1]);
  close(errorPipe[1]);
  outputFd = outputPipe[0];
  errorFd = errorPipe[0];
  if (error != 0) throw std::runtime_error("cannot start " + start.path);
  // The wrapper in sys/pidfd.h cannot be linked from C++ in Debian 12.
  pidFd = static_cast<int>(syscall(SYS_pidfd_open, pid, 0));
}

cProgram::~cProgram() {
  if (pid > 0) {
    kill(pid, SIGKILL);
    waitpid(pid, nullptr, 0);
  }
  close(pidFd);
  close(errorFd);
  closeOutput();
}

std::string cProgram::readLine() {
  std::size_t end = std::string::npos;
  const auto isThere = [&] {
    end = output.find('\n', linesEnd);
    return end != std::string::npos;
  };
  if (!pump(isThere, DEADLINE)) throw std::runtime_error("no line came; errors: " + errors);
  const std::string line = output.substr(linesEnd, end - linesEnd);
  linesEnd = end + 1;
  return line;
}

void cProgram::waitForError(const std::string& text) {
  if (!pump([&] { return errors.find(text) != std::string::npos; }, DEADLINE)) {
    throw std::runtime_error("\"" + text + "\" was not said; errors: " + errors);
  }
}

void cProgram::closeOutput() {
  close(outputFd);
  outputFd = -1;
}

void cProgram::signal(int number) const { kill(pid, number); }

int cProgram::wait(cTimeOut timeOut) {
  const auto hasEnded = [&] {
    pollfd process{pidFd, POLLIN, 0};
    return poll(&process, 1, 0) > 0;
  };
  if (!pump(hasEnded, timeOut)) throw std::runtime_error("it does not end; errors: " + errors);
  pump([&] { return outputFd < 0 && errorFd < 0; }, timeOut);
  int status = 0;
  waitpid(pid, &status, 0);
  pid = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

bool cProgram::pump(const std::function<bool()>& isDone, cTimeOut timeOut) {
  using cClock = std::chrono::steady_clock;
  const auto deadline = cClock::now() + timeOut;
  while (!isDone()) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - cClock::now()).count();
    if (left <= 0) return false;
    std::array<pollfd, 3> sources{
        {{outputFd, POLLIN, 0}, {errorFd, POLLIN, 0}, {pidFd, POLLIN, 0}}};
    poll(sources.data(), sources.size(), static_cast<int>(left));
    if (sources[0].revents != 0) take(outputFd, output);
    if (sources[1].revents != 0) take(errorFd, errors);
    const bool isOver = sources[2].revents != 0 && outputFd < 0 && errorFd < 0;
    if (isOver) return isDone();
  }
  return true;
}

void cProgram::take(int& fd, std::string& text) {
  std::array<char, 65536> buffer;
  const ssize_t got = read(fd, buffer.data(), buffer.size());
  if (got > 0) {
    text.append(buffer.data(), static_cast<std::size_t>(got));
  } else {
    close(fd);
    fd = -1;
  }
}

cResult runProgram(const std::vector<std::string>& arguments, const cStart& start) {
  cProgram program(arguments, start);
  const int status = program.wait();
  return {status, program.getOutput(), program.getErrors()};
}

std::vector<std::string> linesOf(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}
