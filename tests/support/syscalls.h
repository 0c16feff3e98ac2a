#pragma once

#include <termios.h>

#include <atomic>

/// Stand-ins for calls that the library makes, so that a test sees them and can make one fail. A
/// definition in the test program comes before the C library's: build syscalls.cpp into it.
namespace syscalls {

inline std::atomic<int> polls{0};         ///< calls of poll, counted as they begin
inline std::atomic<int> silentPolls{0};   ///< those that ended by their time-out
inline std::atomic<int> settings{0};      ///< calls of tcsetattr
inline std::atomic<bool> refuses{false};  ///< tcsetattr fails
inline std::atomic<int> when{-1};         ///< the last tcsetattr's action
inline termios wanted = {};               ///< the last tcsetattr's attributes

}  // namespace syscalls
