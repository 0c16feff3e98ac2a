#pragma once

#include <string>

/// The traced halves of the system call rows: each prepares, marks, does the one thing, marks.

/// Takes `scans` scans with the reader of that name.
void runTracedReader(const std::string& reader, const std::string& path, int scans);

/// Leaves a driver alone for `seconds`, all of its commands answered. Its own sleep is one call of
/// clock_nanosleep.
void runTracedIdle(const std::string& path, double seconds);
