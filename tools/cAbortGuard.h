#pragma once

#include <csignal>
#include <string>

namespace tool {

/// Ends the process with a message of its own while there is a SCIP 1.x driver.
///
/// Such an answer has no sums: one that is cut short or damaged shows by its number of points
/// alone, and then the library ends the process by a failed assertion (SIGABRT), since it may be
/// another command's. While this lives, that gives the terminal back, says so, and ends with
/// `eExit::SCANS_STOPPED`. One at a time.
class cAbortGuard {
 public:
  cAbortGuard();
  cAbortGuard(const cAbortGuard&) = delete;
  cAbortGuard& operator=(const cAbortGuard&) = delete;
  ~cAbortGuard();

  /// What is said after that, for the next ones too; "": nothing. Only while nothing scans.
  static void setLastWords(const std::string& text);

 private:
  struct sigaction before {};
};

}  // namespace tool
