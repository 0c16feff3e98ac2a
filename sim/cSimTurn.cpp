#include "sim/cSimTurn.h"

#include <cmath>

namespace {
std::uint32_t milliseconds(cSimTurn::cClock::duration span) {
  return static_cast<std::uint32_t>(
      std::chrono::duration_cast<std::chrono::milliseconds>(span).count());
}
}  // namespace

std::uint32_t cSimTurn::endedAt(cMoment when) const {
  if (when <= origin) return originTurn;
  const std::chrono::duration<double> span = when - origin;
  auto turn = originTurn + static_cast<std::uint32_t>(span.count() * perSecond);
  // Rounding must not put a turn before or after its own end.
  while (endOf(turn + 1) <= when) ++turn;
  while (turn > originTurn && endOf(turn) > when) --turn;
  return turn;
}

cSimTurn::cMoment cSimTurn::endOf(std::uint32_t turn) const {
  const double nanoseconds = (static_cast<double>(turn) - originTurn) * 1e9 / perSecond;
  return origin + std::chrono::nanoseconds(std::llround(nanoseconds));
}

std::uint32_t cSimTurn::stampOf(std::uint32_t turn) const {
  return milliseconds(endOf(turn) - start);
}

std::uint32_t cSimTurn::stampAt(cMoment when) const { return milliseconds(when - start); }

void cSimTurn::setRate(double rate, cMoment when) {
  const std::uint32_t turn = endedAt(when);
  origin = endOf(turn);
  originTurn = turn;
  perSecond = rate;
}
