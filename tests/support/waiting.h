#pragma once

#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <thread>

/// Longer than anything here takes on a loaded machine: waits end on their event.
constexpr int LONG = 20000;  // milliseconds
constexpr std::chrono::milliseconds LONG_TIME(LONG);

/// Whether `condition` comes to hold.
inline bool eventually(const std::function<bool()>& condition) {
  const auto deadline = std::chrono::steady_clock::now() + LONG_TIME;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return true;
}

/// Milliseconds that `action` takes.
template <typename Action>
long measure(Action action) {
  using cClock = std::chrono::steady_clock;
  const auto start = cClock::now();
  action();
  return std::chrono::duration_cast<std::chrono::milliseconds>(cClock::now() - start).count();
}

/// How long this process's threads have waited for a processor that was busy.
inline double getStarvedSeconds() {
  double nanoseconds = 0;
  for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task")) {
    double used = 0, waited = 0;
    std::ifstream(thread.path() / "schedstat") >> used >> waited;
    nanoseconds += waited;
  }
  return nanoseconds * 1e-9;
}
