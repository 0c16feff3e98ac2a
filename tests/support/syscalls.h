#pragma once

#include <termios.h>

#include <atomic>

/// Stand-ins for what the library asks of the system, so that a test sees the calls, can make one
/// fail, and can step the wall clock. A definition in the test program comes before the C
/// library's: build syscalls.cpp into it.
namespace syscalls {

inline std::atomic<int> silentPolls{0};  ///< calls of poll that ended by their time-out
inline std::atomic<int> settings{0};     ///< calls of tcsetattr
inline std::atomic<int> when{-1};        ///< the last tcsetattr's action
inline termios wanted = {};              ///< the last tcsetattr's attributes

/// From now on the n-th call of that name fails, in threads that were not there before:
/// "open", "tcgetattr", "tcsetattr", "poll", "read", "write" or "malloc" (and with it new). The
/// caller's thread counts as one of those.
void failNth(const char* call, int n);
/// No call fails any more. Whether one did.
bool hasFailed();

/// From now on gettimeofday and CLOCK_REALTIME are off by so many seconds more.
void stepWallClock(long seconds);

}  // namespace syscalls
