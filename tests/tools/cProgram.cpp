#include "tests/tools/cProgram.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <sstream>
#include <stdexcept>

namespace {

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
  for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGPIPE, SIGTSTP, SIGQUIT}) {
    sigaddset(&restored, number);
  }
  posix_spawnattr_init(&attributes);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setsigdefault(&attributes, &restored);
  int flags = POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF;
  if (leadsSession) flags |= POSIX_SPAWN_SETSID;
  posix_spawnattr_setflags(&attributes, static_cast<short>(flags));
}

/// Opens a pipe whose writing end is to be the child's descriptor `target`.
int openPipe(posix_spawn_file_actions_t& actions, int target, std::vector<int>& handedOver) {
  std::array<int, 2> ends;
  if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("pipe2 failed");
  posix_spawn_file_actions_adddup2(&actions, ends[1], target);
  handedOver.push_back(ends[1]);
  return ends[0];
}

}  // namespace

cProgram::cProgram(const std::vector<std::string>& arguments, const cStart& start) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  std::vector<int> handedOver;
  if (start.setting == eSetting::TERMINAL) {
    openTerminal(actions);
  } else {
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    outputFd = openPipe(actions, STDOUT_FILENO, handedOver);
    errorFd = openPipe(actions, STDERR_FILENO, handedOver);
  }
  posix_spawnattr_t attributes;
  setAttributes(attributes, start.setting != eSetting::PIPES);

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
  for (const int fd : handedOver) close(fd);
  if (error != 0) throw std::runtime_error("cannot start " + start.path);
  // The wrapper in sys/pidfd.h cannot be linked from C++ in Debian 12.
  pidFd = static_cast<int>(syscall(SYS_pidfd_open, pid, 0));
}

/// The leader of a session gets the first terminal that it opens as its own.
void cProgram::openTerminal(posix_spawn_file_actions_t& actions) {
  const winsize size{24, 80, 0, 0};
  std::array<char, 64> path{};
  if (openpty(&outputFd, &terminalFd, path.data(), nullptr, &size) != 0) {
    throw std::runtime_error("no pseudo-terminal to be had");
  }
  fcntl(outputFd, F_SETFD, FD_CLOEXEC);
  fcntl(terminalFd, F_SETFD, FD_CLOEXEC);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, path.data(), O_RDWR, 0);
  posix_spawn_file_actions_adddup2(&actions, STDIN_FILENO, STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, STDIN_FILENO, STDERR_FILENO);
}

cProgram::~cProgram() {
  if (pid > 0) {
    kill(pid, SIGKILL);
    waitpid(pid, nullptr, 0);
  }
  for (const int fd : {pidFd, outputFd, errorFd, terminalFd}) close(fd);
}

std::string cProgram::readLine() {
  const std::size_t begin = seen;
  waitFor("\n");
  return output.substr(begin, seen - begin - 1);
}

void cProgram::waitFor(const std::string& text) {
  const auto hasCome = [&] { return output.find(text, seen) != std::string::npos; };
  if (!pump(hasCome, DEADLINE)) {
    throw std::runtime_error("\"" + text + "\" did not come, but: " + output.substr(seen) +
                             "; errors: " + errors);
  }
  seen = output.find(text, seen) + text.size();
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
  if (!pump([&] { return outputFd < 0 && errorFd < 0 && hasEnded(); }, timeOut)) {
    throw std::runtime_error("it does not end; errors: " + errors + "; output: " + output);
  }
  int status = 0;
  waitpid(pid, &status, 0);
  pid = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

void cProgram::type(const std::string& keys) const {
  if (write(outputFd, keys.data(), keys.size()) != static_cast<ssize_t>(keys.size())) {
    throw std::runtime_error("the terminal takes no keys");
  }
}

void cProgram::resize(int columns, int rows) const {
  winsize size{};
  size.ws_col = static_cast<unsigned short>(columns);
  size.ws_row = static_cast<unsigned short>(rows);
  ioctl(outputFd, TIOCSWINSZ, &size);
}

termios cProgram::getModes() {
  if (terminalFd >= 0) tcgetattr(terminalFd, &modes);
  return modes;
}

bool cProgram::hasEnded() const {
  pollfd process{pidFd, POLLIN, 0};
  return poll(&process, 1, 0) > 0;
}

/// A terminal's output ends when nobody has its far end open any more.
void cProgram::leaveTerminal() {
  if (terminalFd < 0) return;
  getModes();
  close(terminalFd);
  terminalFd = -1;
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
    if (sources[2].revents == 0) continue;
    leaveTerminal();
    if (outputFd < 0 && errorFd < 0) return isDone();
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

cResult runAsNobody(const std::vector<std::string>& arguments) {
  std::vector<std::string> whole{"--reuid=65534",
                                 "--regid=65534",
                                 "--clear-groups",
                                 "--inh-caps=+dac_read_search",
                                 "--ambient-caps=+dac_read_search",
                                 PROGRAM_PATH};
  whole.insert(whole.end(), arguments.begin(), arguments.end());
  return runProgram(whole, {{}, eSetting::PIPES, "/usr/bin/setpriv"});
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
