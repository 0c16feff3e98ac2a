#pragma once

#include <string>

/// What the system call rows run under strace: each prepares, marks the begin, does the one thing
/// to be measured, marks the end.

/// Takes `scans` scans with the reader of that name.
void runTracedReader(const std::string& reader, const std::string& path, int scans);

/// Leaves a driver idle for `seconds`, with all its commands answered. The sleep itself is one call
/// of clock_nanosleep.
void runTracedIdle(const std::string& path, double seconds);

/// The same with a scanner that has scanned and is stopped.
void runTracedStopped(const std::string& path, double seconds);
