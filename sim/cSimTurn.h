#pragma once

#include <chrono>
#include <cstdint>

/// The turning mirror: which turn ends when. Turn n ends n turns after power-on; there is no
/// drift, since each end is reckoned from the last change of rate and not from the turn before.
class cSimTurn {
 public:
  using cClock = std::chrono::steady_clock;
  using cMoment = cClock::time_point;

  cSimTurn(cMoment powerOn, double rate) : start(powerOn), origin(powerOn), perSecond(rate) {}

  /// Turns that have ended by then.
  std::uint32_t endedAt(cMoment when) const;
  /// When that turn ends.
  cMoment endOf(std::uint32_t turn) const;
  /// Milliseconds from power-on to the end of that turn, as the sensor's time stamp.
  std::uint32_t stampOf(std::uint32_t turn) const;
  /// Milliseconds from power-on to then.
  std::uint32_t stampAt(cMoment when) const;

  double getRate() const { return perSecond; }
  /// Goes on at another rate from the last turn that has ended by then.
  void setRate(double rate, cMoment when);

 private:
  cMoment start;
  cMoment origin;
  std::uint32_t originTurn = 0;
  double perSecond;
};
