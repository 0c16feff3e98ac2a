#ifndef TARVOLINK_TESTS_TOOLS_CPROGRAM_H
#define TARVOLINK_TESTS_TOOLS_CPROGRAM_H

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <string>
#include <vector>

/// How a program is started.
struct cStart {
  std::string path = PROGRAM_PATH;
  bool leadsSession = false;  ///< a session of its own, with no terminal
  /// "NAME=value", before the test's own. No serial device is there unless TARVOLINK_DEVICES says
  /// so.
  std::vector<std::string> environment;
};

/// A program as a process of its own, with pipes on its output and errors.
class cProgram {
 public:
  using cTimeOut = std::chrono::seconds;
  static constexpr cTimeOut DEADLINE{60};

  /// Starts it with `arguments`.
  explicit cProgram(const std::vector<std::string>& arguments, const cStart& start = {});
  cProgram(const cProgram&) = delete;
  cProgram& operator=(const cProgram&) = delete;
  ~cProgram();  ///< kills it if it still runs

  /// The next line of its output, without line end; throws when none comes.
  std::string readLine();
  /// Waits until its errors hold `text`; throws when they do not.
  void waitForError(const std::string& text);
  /// Closes the reading end of its output, as `head` does.
  void closeOutput();
  void signal(int number) const;
  pid_t getPid() const { return pid; }
  /// Waits for its end. Its exit status, or minus the signal that killed it; throws when it goes
  /// on.
  int wait(cTimeOut timeOut = DEADLINE);

  const std::string& getOutput() const { return output; }  ///< so far, lines read included
  const std::string& getErrors() const { return errors; }

 private:
  bool pump(const std::function<bool()>& isDone, cTimeOut timeOut);
  static void take(int& fd, std::string& text);

  pid_t pid = -1;
  int pidFd = -1;
  int outputFd = -1;  // -1 once it is at its end, or closed
  int errorFd = -1;
  std::string output;
  std::string errors;
  std::size_t linesEnd = 0;  // of what readLine has handed out
};

/// Runs it to its end.
struct cResult {
  int status;
  std::string output;
  std::string errors;
};
cResult runProgram(const std::vector<std::string>& arguments, const cStart& start = {});

/// `text` cut at its line ends.
std::vector<std::string> linesOf(const std::string& text);

#endif
