#include "tools/terminal/cTerminal.h"

#include <fmt/format.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <thread>

#include "tools/terminal/cMessageBuffer.h"

namespace tool {

namespace {

constexpr std::string_view ENTER = "\x1b[?1049h\x1b[?25l";  // alternate screen, no cursor
constexpr std::string_view LEAVE = "\x1b[0m\x1b[?25h\x1b[?1049l";
constexpr std::string_view CLEAR = "\x1b[0m\x1b[2J";
constexpr std::string_view BEGIN_FRAME = "\x1b[?2026h";  // terminals that know it do not flicker
constexpr std::string_view END_FRAME = "\x1b[?2026l";
constexpr char ESCAPE = '\x1b';
constexpr int ROOM_MS = 100;  // how long a terminal that takes nothing is waited for at the end
constexpr std::chrono::milliseconds FOREGROUND_PAUSE{100};

constexpr std::array FATAL = {SIGQUIT, SIGABRT, SIGSEGV, SIGBUS, SIGFPE,
                              SIGILL,  SIGUSR1, SIGUSR2, SIGALRM};

// What a signal handler needs, therefore static.
std::atomic<bool> isTaken{false};
std::atomic<bool> suspendRequested{false};
std::atomic<bool> hasResumed{false};
int terminal = -1;
termios before;
cMessageBuffer messages;

/// True also for a terminal that does not control this process: then nobody else has it.
bool isForeground() {
  const pid_t group = tcgetpgrp(terminal);
  return group < 0 || group == getpgrp();
}

/// Behind the key that begins at `at`: a cursor or function key is several characters, ESC "["
/// with parameters and a letter or "~", or ESC "O" and a letter (ECMA-48).
std::size_t endOfKey(const std::string& typed, std::size_t at) {
  if (typed[at] != ESCAPE || at + 1 == typed.size()) return at + 1;
  if (typed[at + 1] == 'O') return std::min(at + 3, typed.size());
  if (typed[at + 1] != '[') return at + 1;
  std::size_t end = at + 2;
  while (end < typed.size() && typed[end] < '@') ++end;
  return std::min(end + 1, typed.size());
}

void endFatally(int number) {
  cTerminal::restore();
  raise(number);  // its own action is back already and ends the process on return
}

void onSuspend(int) { suspendRequested = true; }
void onResume(int) { hasResumed = true; }

}  // namespace

cTerminal::cTerminal(cOutput& screen, cShutdown& stop) : output(screen), stop(stop) {
  terminal = output.getDescriptor();
  for (const int number : FATAL) handle(number, endFatally, static_cast<int>(SA_RESETHAND));
  handle(SIGTSTP, onSuspend, SA_RESTART);
  handle(SIGCONT, onResume, SA_RESTART);
  acquire();
}

cTerminal::~cTerminal() {
  restore();
  for (const auto& [number, action] : handledBefore) sigaction(number, &action, nullptr);
}

void cTerminal::restore() {
  if (!isTaken.exchange(false)) return;
  // In the background the modes are the shell's own.
  if (isForeground()) tcsetattr(terminal, TCSANOW, &before);
  pollfd room{terminal, POLLOUT, 0};
  // A terminal that is gone takes nothing, and there is nothing else to be done about it.
  if (poll(&room, 1, ROOM_MS) > 0 && write(terminal, LEAVE.data(), LEAVE.size()) < 0) return;
  messages.flush();
}

/// A signal that is ignored stays so (a shell without job control ignores Ctrl-Z), and one that a
/// sanitizer watches stays its own.
void cTerminal::handle(int number, void (*handler)(int), int flags) {
  struct sigaction action {};
  sigaction(number, nullptr, &action);
  if (action.sa_handler != SIG_DFL) return;
  handledBefore.emplace_back(number, action);
  action.sa_handler = handler;
  action.sa_flags = flags;
  sigaction(number, &action, nullptr);
}

void cTerminal::acquire() {
  waitForForeground();
  if (stop.isRequested()) return;
  if (!isTaken) tcgetattr(terminal, &before);
  isTaken = true;
  termios keys = before;
  keys.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO | IEXTEN);
  keys.c_iflag &= ~static_cast<tcflag_t>(IXON);  // Ctrl-S would hold the picture, and its end
  keys.c_cc[VMIN] = 1;
  keys.c_cc[VTIME] = 0;
  tcsetattr(terminal, TCSANOW, &keys);
  messages.begin();
  output.write(ENTER);
  clear();
}

/// A job in the background stops, as one that reads from its terminal does. Where that signal
/// does nothing (the shell is gone) it waits.
void cTerminal::waitForForeground() const {
  while (!isForeground() && !stop.isRequested()) {
    raise(SIGTTIN);
    std::this_thread::sleep_for(FOREGROUND_PAUSE);
  }
}

void cTerminal::suspend() {
  restore();
  struct sigaction handled {};
  struct sigaction byDefault {};
  byDefault.sa_handler = SIG_DFL;
  sigaction(SIGTSTP, &byDefault, &handled);
  raise(SIGTSTP);  // returns when the process goes on
  sigaction(SIGTSTP, &handled, nullptr);
}

/// After SIGSTOP, which cannot be caught, SIGCONT alone tells that others had the terminal.
void cTerminal::followJobControl() {
  const bool wasSuspended = suspendRequested.exchange(false);
  if (wasSuspended) suspend();
  if (hasResumed.exchange(false) || wasSuspended) acquire();
}

std::string cTerminal::readKeys() {
  followJobControl();
  pollfd input{terminal, POLLIN, 0};
  if (poll(&input, 1, 0) <= 0 || (input.revents & POLLIN) == 0) return "";
  std::array<char, 64> buffer;
  const ssize_t got = read(terminal, buffer.data(), buffer.size());
  const std::string typed(buffer.data(), got > 0 ? static_cast<std::size_t>(got) : 0);
  std::string keys;
  for (std::size_t at = 0; at < typed.size(); at = endOfKey(typed, at)) {
    if (typed[at] != ESCAPE) keys += typed[at];
  }
  return keys;
}

void cTerminal::show(const std::vector<std::string>& lines) {
  const bool all = shown.size() != lines.size();
  std::string frame(BEGIN_FRAME);
  if (all) frame += CLEAR;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (all || lines[i] != shown[i]) frame += fmt::format("\x1b[{};1H\x1b[2K{}", i + 1, lines[i]);
  }
  shown = lines;
  output.write(frame.append(END_FRAME));
}

}  // namespace tool
