#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <functional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

/// How a program is started.
struct cStart {
  std::string path = PROGRAM_PATH;
  /// "NAME=value", beside the test's own. No serial device is there unless TARVOLINK_DEVICES says
  /// so.
  std::vector<std::string> environment = {};
  /// Of 80 x 24 cells, its own. Else there are pipes, and no input.
  bool isOnTerminal = false;
};

/// A program as a process of its own.
class cProgram {
 public:
  static constexpr std::chrono::seconds DEADLINE{60};

  /// Starts it with `arguments`.
  explicit cProgram(const std::vector<std::string>& arguments, const cStart& start = {}) {
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
  cProgram(const cProgram&) = delete;
  cProgram& operator=(const cProgram&) = delete;
  /// Kills it if it still runs.
  ~cProgram() {
    if (pid > 0) {
      kill(pid, SIGKILL);
      waitpid(pid, nullptr, 0);
    }
    for (const int fd : {outputFd, errorFd}) close(fd);
  }

  /// The next line of its output, without line end; throws when none comes.
  std::string readLine() {
    const std::size_t begin = seen;
    waitFor("\n");
    return output.substr(begin, seen - begin - 1);
  }
  /// Waits until `text` comes in its output, behind what was read or waited for before; throws
  /// when it does not.
  void waitFor(const std::string& text) {
    pump([&] { return output.find(text, seen) != std::string::npos; }, text);
    seen = output.find(text, seen) + text.size();
  }
  /// Has read what came until now.
  void skipOutput() { seen = output.size(); }
  /// Waits likewise until `text` comes in its errors.
  void waitForError(const std::string& text) {
    pump([&] { return errors.find(text, seenOfErrors) != std::string::npos; }, text);
    seenOfErrors = errors.find(text, seenOfErrors) + text.size();
  }
  /// Closes the reading end of its output, as `head` does.
  void closeOutput() { close(std::exchange(outputFd, -1)); }
  void signal(int number) const { kill(pid, number); }
  pid_t getPid() const { return pid; }
  /// Waits for its end. Its exit status, or minus the signal that killed it; throws when it goes
  /// on.
  int wait() {
    pump([&] { return outputFd < 0 && errorFd < 0; }, "its end");
    int status = 0;
    waitpid(pid, &status, 0);
    pid = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  }

  const std::string& getOutput() const { return output; }  ///< so far; all of a terminal's text
  const std::string& getErrors() const { return errors; }

  // Of a program on a terminal only:
  void type(const std::string& keys) const {
    EXPECT_EQ(write(outputFd, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
  }
  /// As it has them, or had them when it last said something.
  termios getModes() {
    tcgetattr(outputFd, &modes);
    return modes;
  }

 private:
  /// In the child of a process with threads: system calls only. Signals are as a shell gives them,
  /// whatever the test run itself ignores or blocks.
  [[noreturn]] static void become(const std::vector<char*>& words) {
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGPIPE, SIGTSTP, SIGQUIT}) {
      std::signal(number, SIG_DFL);
    }
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    execv(words[0], words.data());
    _exit(127);
  }

  static void take(int& fd, std::string& text) {
    std::array<char, 65536> buffer;
    const ssize_t got = read(fd, buffer.data(), buffer.size());
    if (got <= 0) close(std::exchange(fd, -1));
    if (got > 0) text.append(buffer.data(), static_cast<std::size_t>(got));
  }

  void pump(const std::function<bool()>& isDone, const std::string& awaited) {
    using cClock = std::chrono::steady_clock;
    const auto deadline = cClock::now() + DEADLINE;
    while (!isDone()) {
      const auto left =
          std::chrono::duration_cast<std::chrono::milliseconds>(deadline - cClock::now()).count();
      if (left <= 0 || (outputFd < 0 && errorFd < 0)) {
        throw std::runtime_error(awaited + " did not come; output: " + output.substr(seen) +
                                 "; errors: " + errors);
      }
      std::array<pollfd, 2> sources{{{outputFd, POLLIN, 0}, {errorFd, POLLIN, 0}}};
      poll(sources.data(), sources.size(), static_cast<int>(left));
      if (sources[0].revents != 0) take(outputFd, output);
      getModes();  // the end of a session may reset them
      if (sources[1].revents != 0) take(errorFd, errors);
    }
  }

  pid_t pid = -1;
  int outputFd = -1;  // -1 once it is at its end, or closed
  int errorFd = -1;   // of pipes
  termios modes{};
  std::string output;
  std::string errors;
  std::size_t seen = 0;  // of the output
  std::size_t seenOfErrors = 0;
};

/// Runs it to its end.
struct cResult {
  int status;
  std::string output;
  std::string errors;
};
inline cResult runProgram(const std::vector<std::string>& arguments, const cStart& start = {}) {
  cProgram program(arguments, start);
  const int status = program.wait();
  return {status, program.getOutput(), program.getErrors()};
}

/// The same as the user nobody, who may only read everything: the build may lie in a folder that is
/// root's alone. For root.
inline cResult runAsNobody(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), {"--reuid=65534", "--regid=65534", "--clear-groups",
                                       "--inh-caps=+dac_read_search",
                                       "--ambient-caps=+dac_read_search", PROGRAM_PATH});
  return runProgram(arguments, {"/usr/bin/setpriv"});
}

/// `text` cut at its line ends.
inline std::vector<std::string> linesOf(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

/// Whether `part` stands in `text`; where not, a failed test shows both.
inline testing::AssertionResult holds(const std::string& text, const std::string& part) {
  if (text.find(part) != std::string::npos) return testing::AssertionSuccess();
  return testing::AssertionFailure() << "no \"" << part << "\" in: " << text;
}
