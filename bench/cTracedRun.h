#pragma once

#include <map>
#include <string>
#include <vector>

/// A run of this program under strace(1), and the system calls that it made between two marks.
class cTracedRun {
 public:
  /// Runs this program with `arguments` and waits for its end. Throws std::runtime_error when
  /// strace or the program fails, or when a mark is missing.
  explicit cTracedRun(const std::vector<std::string>& arguments);

  /// How many calls of that name began between the marks, in any thread.
  int count(const std::string& name) const;
  /// How many calls of any name.
  int countAll() const;

  /// For the traced program: marks the begin or the end of the measurement, by an access(2) to a
  /// file that does not exist.
  static void markBegin();
  static void markEnd();

 private:
  void readTrace(const std::string& path);

  std::map<std::string, int> calls;
};
