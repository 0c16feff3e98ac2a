#pragma once

#include <time.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

/// Seconds on one of the system's clocks (clock_gettime(2)).
inline double secondsOn(clockid_t clock) {
  timespec now{};
  clock_gettime(clock, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

/// Seconds since a fixed point in time that is the same for all processes.
inline double now() { return secondsOn(CLOCK_MONOTONIC); }

/// Seconds of CPU time that all threads of this process have used, in user mode and in the kernel.
/// The same sum as getrusage(RUSAGE_SELF), but in nanoseconds and up to date for running threads.
inline double cpuTime() { return secondsOn(CLOCK_PROCESS_CPUTIME_ID); }

/// The value below which `share` (0 to 1) of the values lie, by the nearest rank; 0 if there are
/// none.
inline double quantile(std::vector<double> values, double share) {
  if (values.empty()) return 0;
  std::sort(values.begin(), values.end());
  const double rank = share * static_cast<double>(values.size() - 1);
  return values[static_cast<std::size_t>(std::lround(rank))];
}

/// The middle value.
inline double median(const std::vector<double>& values) { return quantile(values, 0.5); }
