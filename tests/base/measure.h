#pragma once

#include <chrono>

constexpr int PATIENCE = 8000;  // milliseconds: how long a test waits for what must come

/// Milliseconds that `action` takes.
template <typename Action>
long measure(Action action) {
  using cClock = std::chrono::steady_clock;
  const auto start = cClock::now();
  action();
  return std::chrono::duration_cast<std::chrono::milliseconds>(cClock::now() - start).count();
}
