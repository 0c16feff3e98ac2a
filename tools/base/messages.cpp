#include "tools/base/messages.h"

#include <poll.h>
#include <unistd.h>

#include <mutex>

namespace tool {

namespace {

constexpr int PATIENCE_MS = 1000;
constexpr auto CLEAR_BELOW = "\x1b[J";
constexpr auto BACK = "\r\x1b[A";  // from the line below

std::mutex mutex;
bool isShownBelow = false;  // under mutex

/// Writes what standard error takes at once; a write(2) to one that is held back would never end.
void write(const std::string& text, int patience) {
  pollfd room{STDERR_FILENO, POLLOUT, 0};
  if (poll(&room, 1, patience) <= 0) return;
  [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, text.data(), text.size());
}

void print(const std::string& text, int patience) {
  const std::lock_guard<std::mutex> lock(mutex);
  write((isShownBelow ? CLEAR_BELOW : "") + ("tarvolink: " + text + "\n"), patience);
  isShownBelow = false;
}

}  // namespace

void printError(const std::string& text) { print(text, PATIENCE_MS); }

void printNote(const std::string& text) {
  if (verbosity >= eVerbosity::NOTES) print(text, PATIENCE_MS);
}

void printDetail(const std::string& text) {
  if (verbosity >= eVerbosity::DETAILS) print(text, 0);
}

void showBelow(const std::string& text) {
  const std::lock_guard<std::mutex> lock(mutex);
  if (text.empty() && !isShownBelow) return;
  write(text.empty() ? CLEAR_BELOW : CLEAR_BELOW + ("\n" + text) + BACK, 0);
  isShownBelow = !text.empty();
}

}  // namespace tool
