#pragma once

#include <gtest/gtest.h>
#include <sys/types.h>
#include <termios.h>

#include <chrono>
#include <functional>
#include <string>
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
  explicit cProgram(const std::vector<std::string>& arguments, const cStart& start = {});
  cProgram(const cProgram&) = delete;
  cProgram& operator=(const cProgram&) = delete;
  ~cProgram();  ///< kills it if it still runs

  /// The next line of its output, without line end; throws when none comes.
  std::string readLine();
  /// Waits until `text` comes in its output, behind what was read or waited for before; throws
  /// when it does not.
  void waitFor(const std::string& text);
  /// Has read what came until now.
  void skipOutput() { seen = output.size(); }
  /// Waits until its errors hold `text`; throws when they do not.
  void waitForError(const std::string& text);
  /// Closes the reading end of its output, as `head` does.
  void closeOutput();
  void signal(int number) const;
  pid_t getPid() const { return pid; }
  /// Waits for its end. Its exit status, or minus the signal that killed it; throws when it goes
  /// on.
  int wait();

  const std::string& getOutput() const { return output; }  ///< so far; all of a terminal's text
  const std::string& getErrors() const { return errors; }

  // Of a program on a terminal only:
  void type(const std::string& keys) const;
  termios getModes();  ///< as it has them, or had them when it last said something

 private:
  void pump(const std::function<bool()>& isDone, const std::string& complaint);

  pid_t pid = -1;
  int outputFd = -1;  // -1 once it is at its end, or closed
  int errorFd = -1;   // of pipes
  termios modes{};
  std::string output;
  std::string errors;
  std::size_t seen = 0;  // of the output
};

/// Runs it to its end.
struct cResult {
  int status;
  std::string output;
  std::string errors;
};
cResult runProgram(const std::vector<std::string>& arguments, const cStart& start = {});

/// The same as the user nobody, who may only read everything: the build may lie in a folder that is
/// root's alone. For root.
cResult runAsNobody(std::vector<std::string> arguments);

/// `text` cut at its line ends.
std::vector<std::string> linesOf(const std::string& text);

/// Whether `part` stands in `text`; where not, a failed test shows both.
testing::AssertionResult holds(const std::string& text, const std::string& part);
