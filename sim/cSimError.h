#pragma once

#include <cerrno>
#include <string>
#include <system_error>

/// Throws std::system_error for a failed system call: errno, and what went wrong.
[[noreturn]] inline void throwSimError(const std::string& message, int error = errno) {
  throw std::system_error(error, std::generic_category(), "simulated sensor: " + message);
}
