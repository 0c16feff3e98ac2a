#include "tools/cAbortGuard.h"

#include <unistd.h>

#include <string_view>

#include "tools/cFailure.h"
#include "tools/cTerminal.h"

namespace tool {

namespace {

constexpr std::string_view MESSAGE =
    "tarvolink: the sensor's answer has a different number of points than was asked for (above). "
    "It "
    "was cut short or damaged on its way, and SCIP 1.x has no sums that show it: look at the "
    "plugs, "
    "take a shorter cable, and see that no other program uses the port.\n";
std::string lastWords;  // made before the signal: a handler must not allocate

/// Whoever does not read it gets the status all the same.
void writeError(std::string_view text) {
  [[maybe_unused]] const ssize_t said = write(STDERR_FILENO, text.data(), text.size());
}

void endWithMessage(int) {
  cTerminal::restore();
  writeError(MESSAGE);
  writeError(lastWords);
  _exit(static_cast<int>(eExit::SCANS_STOPPED));
}

}  // namespace

cAbortGuard::cAbortGuard() {
  struct sigaction own {};
  own.sa_handler = endWithMessage;
  sigaction(SIGABRT, &own, &before);
}

void cAbortGuard::setLastWords(const std::string& text) {
  lastWords = text.empty() ? "" : "tarvolink: " + text + "\n";
}

cAbortGuard::~cAbortGuard() { sigaction(SIGABRT, &before, nullptr); }

}  // namespace tool
