#pragma once

#include <cerrno>
#include <string>
#include <system_error>

/// Throws what a failed system call left in errno, with what was tried.
[[noreturn]] inline void throwSimError(const std::string& tried, int error = errno) {
  throw std::system_error(error, std::generic_category(), "simulated sensor: " + tried);
}
