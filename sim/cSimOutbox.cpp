#include "sim/cSimOutbox.h"

#include <algorithm>
#include <utility>

namespace {

constexpr std::size_t FIFO = 16;  // bytes that a UART hands over together, at the least
constexpr cSimOutbox::cSpan LAG = std::chrono::milliseconds(50);  // more is no catching up

std::size_t bytesIn(cSimOutbox::cSpan span, int speed) {
  return static_cast<std::size_t>(static_cast<double>(span.count()) * speed / 1e10);
}

cSimOutbox::cSpan timeOf(std::size_t bytes, int speed) {
  if (speed == 0) return {};
  return cSimOutbox::cSpan(static_cast<std::int64_t>(static_cast<double>(bytes) * 1e10 / speed));
}

}  // namespace

void cSimOutbox::push(cSimRecord record, cMoment earliest) {
  waiting += record.bytes.size();
  items.push_back({std::move(record), earliest});
}

bool cSimOutbox::hasRunningScan() const {
  return std::any_of(items.begin(), items.end(),
                     [](const cItem& item) { return item.record.running; });
}

void cSimOutbox::begin(cMoment now) {
  const cSimRecord& record = items.front().record;
  const auto taken = [&](eSimFault fault) { return faults.take(fault, record); };
  const auto size = [](std::optional<int> value) {
    return static_cast<std::size_t>(std::max(value.value_or(0), 0));
  };
  splitAt = size(taken(eSimFault::SPLIT));
  splitPause = std::chrono::milliseconds(size(faults.valueOf(eSimFault::SPLIT_PAUSE)));
  const auto gap = taken(eSimFault::BYTE_BY_BYTE);
  single = gap.has_value();
  singleGap = std::chrono::microseconds(size(gap));
  burst = std::chrono::milliseconds(size(taken(eSimFault::BURSTS)));
  begun = true;
  done = 0;
  plan(std::max(now, items.front().earliest));
}

void cSimOutbox::plan(cMoment from) {
  const std::size_t rest = items.front().record.bytes.size() - done;
  piece = rest;
  if (speed != 0) {
    const cSpan together = std::max<cSpan>(std::chrono::milliseconds(1), burst);
    piece = std::min(piece, std::max(FIFO, bytesIn(together, speed)));
  }
  if (done < splitAt) piece = std::min(piece, splitAt - done);
  if (single) piece = std::min<std::size_t>(piece, 1);
  cSpan wait = timeOf(piece, speed);
  if (single && done > 0) wait = std::max(wait, singleGap);
  if (splitAt > 0 && done == splitAt) wait += splitPause;
  leaveAt = from + wait;
  if (burst.count() > 0) {
    const cSpan over = leaveAt.time_since_epoch() % burst;
    if (over.count() > 0) leaveAt += burst - over;
  }
}

std::size_t cSimOutbox::due(cMoment now) {
  if (items.empty()) return 0;
  if (!begun) begin(now);
  return leaveAt <= now ? piece : 0;
}

bool cSimOutbox::sent(std::size_t count, cMoment now) {
  done += count;
  piece -= count;
  waiting -= count;
  if (done == items.front().record.bytes.size()) return true;
  if (piece == 0) plan(now - leaveAt < LAG ? leaveAt : now);
  return false;
}

cSimRecord cSimOutbox::take() {
  cSimRecord record = std::move(items.front().record);
  items.pop_front();
  begun = false;
  done = 0;
  return record;
}
