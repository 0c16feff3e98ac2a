#pragma once

#include <cstdint>

/// A small random number generator (splitmix64): the same on every machine, and cheap enough to be
/// constructed anew for each reading.
class cSimRandom {
 public:
  explicit cSimRandom(std::uint64_t seed) : state(seed) {}

  std::uint64_t next() {
    std::uint64_t z = (state += 0x9E3779B97F4A7C15u);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
    return z ^ (z >> 31);
  }

  /// A number from 0 to limit - 1; 0 for a limit of 0.
  std::uint64_t below(std::uint64_t limit) { return limit == 0 ? 0 : next() % limit; }

  /// Approximately Gaussian, mean 0 and standard deviation 1: the sum of eight random bytes has
  /// mean 1020 and standard deviation 209.0.
  double gaussian() {
    std::uint64_t bits = next();
    int total = 0;
    for (int i = 0; i < 8; ++i, bits >>= 8) total += static_cast<int>(bits & 0xFF);
    return (total - 1020) / 209.0;
  }

 private:
  std::uint64_t state;
};
