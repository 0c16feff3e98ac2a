#pragma once

/// Stand-ins for what the library asks of the system, so that a test can make one call fail or
/// step the wall clock. A definition in the test program comes before the C library's: build
/// shim.cpp into it.
namespace shim {

/// From now on the n-th call of that name fails, in threads that were not there before:
/// "open", "tcgetattr", "tcsetattr", "poll", "read", "write" or "malloc" (and with it new). The
/// caller's thread counts as one of those.
void failNth(const char* call, int n);
/// No call fails any more. Whether one did.
bool hasFailed();

/// What gettimeofday and CLOCK_REALTIME say is so many seconds off from now on.
void stepWallClock(long seconds);

}  // namespace shim
