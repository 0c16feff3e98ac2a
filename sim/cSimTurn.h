#pragma once

#include <chrono>
#include <cstdint>

/// The turning mirror: which turn ends when. Turn n ends n turns after power-on. The turns do not
/// drift: each end is computed from the last change of rate, not from the end before it.
class cSimTurn {
 public:
  using cClock = std::chrono::steady_clock;
  using cTimePoint = cClock::time_point;

  cSimTurn(cTimePoint powerOn, double rate) : powerOn(powerOn), origin(powerOn), rate(rate) {}

  /// How many turns have ended at that time.
  std::uint32_t endedAt(cTimePoint when) const;
  /// When that turn ends.
  cTimePoint endOf(std::uint32_t turn) const;
  /// Milliseconds from power-on to the end of that turn: the time stamp of its scan.
  std::uint32_t stampOf(std::uint32_t turn) const;
  /// Milliseconds from power-on to that time.
  std::uint32_t stampAt(cTimePoint when) const;

  /// Continues at another rate, from the end of the last turn that has ended at that time.
  void setRate(double newRate, cTimePoint when);

 private:
  cTimePoint powerOn;
  cTimePoint origin;             ///< the end of originTurn, when the rate last changed
  std::uint32_t originTurn = 0;  ///< 0: power-on
  double rate;                   ///< turns a second
};
