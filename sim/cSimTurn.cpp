#include "sim/cSimTurn.h"

#include <cmath>

namespace {
std::uint32_t milliseconds(cSimTurn::cClock::duration span) {
  return static_cast<std::uint32_t>(
      std::chrono::duration_cast<std::chrono::milliseconds>(span).count());
}
}  // namespace

std::uint32_t cSimTurn::endedAt(cTimePoint when) const {
  if (when <= origin) return originTurn;
  const std::chrono::duration<double> span = when - origin;
  auto turn = originTurn + static_cast<std::uint32_t>(span.count() * rate);
  // The product may be rounded across a turn's end: a thread that sleeps until endOf(n) must then
  // find that turn n has ended, or it would spin.
  while (endOf(turn + 1) <= when) ++turn;
  while (turn > originTurn && endOf(turn) > when) --turn;
  return turn;
}

cSimTurn::cTimePoint cSimTurn::endOf(std::uint32_t turn) const {
  const double nanoseconds = (static_cast<double>(turn) - originTurn) * 1e9 / rate;
  return origin + std::chrono::nanoseconds(std::llround(nanoseconds));
}

std::uint32_t cSimTurn::stampOf(std::uint32_t turn) const {
  return milliseconds(endOf(turn) - powerOn);
}

std::uint32_t cSimTurn::stampAt(cTimePoint when) const { return milliseconds(when - powerOn); }

void cSimTurn::setRate(double newRate, cTimePoint when) {
  const std::uint32_t turn = endedAt(when);
  origin = endOf(turn);
  originTurn = turn;
  rate = newRate;
}
