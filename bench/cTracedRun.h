#pragma once

#include <map>
#include <string>
#include <vector>

/// This program, run once more under strace(1): which system calls it made between two marks.
class cTracedRun {
 public:
  /// Runs this program with `arguments` and waits for its end. Throws std::runtime_error when
  /// strace or the program fails, or the marks are missing.
  explicit cTracedRun(const std::vector<std::string>& arguments);

  /// Calls of that name that were begun between the marks, in any thread.
  int count(const std::string& name) const;
  /// All of them.
  int countAll() const;

  /// Called by the program that is traced: the measurement begins, or ends. Either is one
  /// access(2) of a file that does not exist.
  static void markBegin();
  static void markEnd();

 private:
  void readTrace(const std::string& path);

  std::map<std::string, int> calls;
};
