#ifndef TARVOLINK_TESTS_TOOLS_CPTYPROGRAM_H
#define TARVOLINK_TESTS_TOOLS_CPTYPROGRAM_H

#include <sys/types.h>
#include <termios.h>

#include <functional>
#include <string>
#include <vector>

#include "tests/tools/cProgram.h"

/// A program on a terminal of its own, as its user has it: input, output and errors are a pty.
class cPtyProgram {
 public:
  /// Starts it with `arguments` on a terminal of 80 x 24 cells.
  explicit cPtyProgram(const std::vector<std::string>& arguments, const cStart& start = {});
  cPtyProgram(const cPtyProgram&) = delete;
  cPtyProgram& operator=(const cPtyProgram&) = delete;
  ~cPtyProgram();  ///< kills it if it still runs

  /// Waits until `text` comes, after what was waited for before; throws when it does not.
  void waitFor(const std::string& text);
  void type(const std::string& keys) const;
  void resize(int columns, int rows) const;
  void signal(int number) const;
  /// Waits for its end; as cProgram::wait.
  int wait();

  const std::string& getText() const { return text; }  ///< all that it wrote so far
  termios getModes() const;                            ///< of its terminal

 private:
  bool pump(const std::function<bool()>& isDone);

  pid_t pid = -1;
  int pidFd = -1;
  int master = -1;
  int slave = -1;  // keeps the terminal there when the program is gone
  std::string text;
  std::size_t seen = 0;
};

#endif
