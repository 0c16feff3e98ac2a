#include "tests/tools/cPtyProgram.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utmp.h>

#include <array>
#include <csignal>
#include <stdexcept>

namespace {

std::vector<char*> pointersTo(const std::vector<std::string>& words) {
  std::vector<char*> pointers;
  for (const std::string& word : words) pointers.push_back(const_cast<char*>(word.c_str()));
  return pointers;
}

/// In the child, between fork and exec: signals as a login shell has them.
[[noreturn]] void execute(char** argv, char** envp) {
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGPIPE, SIGTSTP}) signal(number, SIG_DFL);
  execve(argv[0], argv, envp);
  _exit(127);
}

}  // namespace

cPtyProgram::cPtyProgram(const std::vector<std::string>& arguments, const cStart& start) {
  auto argv = pointersTo(arguments);
  argv.insert(argv.begin(), const_cast<char*>(start.path.c_str()));
  argv.push_back(nullptr);
  auto envp = pointersTo(start.environment);
  envp.push_back(const_cast<char*>("TARVOLINK_DEVICES="));  // not those of this machine
  for (char** entry = environ; *entry != nullptr; ++entry) envp.push_back(*entry);
  envp.push_back(nullptr);
  const winsize size{24, 80, 0, 0};
  std::array<char, 64> path{};
  if (openpty(&master, &slave, path.data(), nullptr, &size) != 0) {
    throw std::runtime_error("no pseudo-terminal to be had");
  }
  fcntl(master, F_SETFD, FD_CLOEXEC);
  pid = fork();
  if (pid == 0) {
    login_tty(slave);
    execute(argv.data(), envp.data());
  }
  fcntl(slave, F_SETFD, FD_CLOEXEC);
  pidFd = static_cast<int>(syscall(SYS_pidfd_open, pid, 0));
}

cPtyProgram::~cPtyProgram() {
  if (pid > 0) {
    kill(pid, SIGKILL);
    waitpid(pid, nullptr, 0);
  }
  close(pidFd);
  close(slave);
  close(master);
}

void cPtyProgram::waitFor(const std::string& wanted) {
  const auto hasCome = [&] { return text.find(wanted, seen) != std::string::npos; };
  if (!pump(hasCome)) {
    throw std::runtime_error("\"" + wanted + "\" did not come, but: " + text.substr(seen));
  }
  seen = text.find(wanted, seen) + wanted.size();
}

void cPtyProgram::type(const std::string& keys) const {
  if (write(master, keys.data(), keys.size()) != static_cast<ssize_t>(keys.size())) {
    throw std::runtime_error("the terminal takes no keys");
  }
}

void cPtyProgram::resize(int columns, int rows) const {
  winsize size{};
  size.ws_col = static_cast<unsigned short>(columns);
  size.ws_row = static_cast<unsigned short>(rows);
  ioctl(master, TIOCSWINSZ, &size);
}

void cPtyProgram::signal(int number) const { kill(pid, number); }

int cPtyProgram::wait() {
  const auto hasEnded = [&] {
    pollfd process{pidFd, POLLIN, 0};
    return poll(&process, 1, 0) > 0;
  };
  if (!pump(hasEnded)) throw std::runtime_error("it does not end, after: " + text.substr(seen));
  pump([&] {
    pollfd rest{master, POLLIN, 0};
    return poll(&rest, 1, 0) <= 0;
  });
  int status = 0;
  waitpid(pid, &status, 0);
  pid = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

termios cPtyProgram::getModes() const {
  termios modes{};
  tcgetattr(slave, &modes);
  return modes;
}

bool cPtyProgram::pump(const std::function<bool()>& isDone) {
  using cClock = std::chrono::steady_clock;
  const auto deadline = cClock::now() + cProgram::DEADLINE;
  while (!isDone()) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - cClock::now()).count();
    if (left <= 0) return false;
    std::array<pollfd, 2> sources{{{master, POLLIN, 0}, {pidFd, POLLIN, 0}}};
    poll(sources.data(), sources.size(), static_cast<int>(left));
    std::array<char, 65536> buffer;
    const bool isReadable = (sources[0].revents & POLLIN) != 0;
    const ssize_t got = isReadable ? read(master, buffer.data(), buffer.size()) : 0;
    if (got > 0) text.append(buffer.data(), static_cast<std::size_t>(got));
    const bool isOver = sources[1].revents != 0 && got <= 0;
    if (isOver) return isDone();
  }
  return true;
}
