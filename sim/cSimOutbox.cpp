#include "sim/cSimOutbox.h"

#include <algorithm>
#include <utility>

namespace {

constexpr std::size_t UART_FIFO = 16;  // bytes: an interrupt per FIFO, not per byte

// A thread that wakes up late catches up, so that the line keeps its average speed. After a longer
// delay the machine was suspended or the pty was full, and a real line does not run faster then.
constexpr cSimOutbox::cDuration MAX_CATCH_UP = std::chrono::milliseconds(50);

constexpr double BIT_NANOSECONDS_PER_BYTE = 1e10;  // 10 bits, divided by bits per second

std::size_t bytesIn(cSimOutbox::cDuration duration, int speed) {
  const auto nanoseconds = static_cast<double>(duration.count());
  return static_cast<std::size_t>(nanoseconds * speed / BIT_NANOSECONDS_PER_BYTE);
}

cSimOutbox::cDuration timeFor(std::size_t bytes, int speed) {
  if (speed == 0) return {};
  const double nanoseconds = static_cast<double>(bytes) * BIT_NANOSECONDS_PER_BYTE / speed;
  return cSimOutbox::cDuration(static_cast<std::int64_t>(nanoseconds));
}

}  // namespace

void cSimOutbox::push(cSimRecord record, cTimePoint earliest) {
  waiting += record.bytes.size();
  items.push_back({std::move(record), earliest});
}

bool cSimOutbox::hasRunningScan() const {
  return std::any_of(items.begin(), items.end(),
                     [](const cItem& item) { return item.record.running; });
}

// The faults are drawn when the record's turn comes and not in push: one that is set or cleared
// while the record waits still counts.
void cSimOutbox::begin(cTimePoint now) {
  const cSimRecord& record = items.front().record;
  const auto consume = [&](eSimFault fault) { return faults.consume(fault, record); };
  const auto size = [](std::optional<int> value) {
    return static_cast<std::size_t>(std::max(value.value_or(0), 0));
  };
  splitAt = size(consume(eSimFault::SPLIT));
  // Belongs to SPLIT, so it is read and not consumed: `times` counts split records only.
  splitPause = std::chrono::milliseconds(size(faults.valueOf(eSimFault::SPLIT_PAUSE)));
  const auto gap = consume(eSimFault::BYTE_BY_BYTE);
  isByteByByte = gap.has_value();
  byteGap = std::chrono::microseconds(size(gap));
  burst = std::chrono::milliseconds(size(consume(eSimFault::BURSTS)));
  isBegun = true;
  sentBytes = 0;
  planChunk(std::max(now, items.front().earliest));
}

// Decides which bytes leave together next, and when: `from` is when the chunk before them left. A
// chunk is due when its last byte has crossed the line, since a reader gets no byte earlier.
void cSimOutbox::planChunk(cTimePoint from) {
  chunk = chunkSize();
  cDuration wait = timeFor(chunk, speed);
  // The first byte waits for nothing: a gap lies between two bytes.
  if (isByteByByte && sentBytes > 0) wait = std::max(wait, byteGap);
  if (splitAt > 0 && sentBytes == splitAt) wait += splitPause;
  dueAt = endOfBurst(from + wait);
}

// A byte a write would be truest to a serial line but would cost a wake-up each, 11,000 a second at
// 115200 bits/s. So bytes leave by the millisecond, or by the FIFO on a line that is slower.
std::size_t cSimOutbox::chunkSize() const {
  if (isByteByByte) return 1;
  std::size_t size = items.front().record.bytes.size() - sentBytes;
  if (speed != 0) {
    const cDuration together = std::max<cDuration>(std::chrono::milliseconds(1), burst);
    size = std::min(size, std::max(UART_FIFO, bytesIn(together, speed)));
  }
  // No chunk crosses the split, so that the pause falls between two writes.
  return sentBytes < splitAt ? std::min(size, splitAt - sentBytes) : size;
}

// As a USB converter does, which hands bytes over at the ticks of its latency timer.
cSimOutbox::cTimePoint cSimOutbox::endOfBurst(cTimePoint when) const {
  if (burst.count() == 0) return when;
  const cDuration over = when.time_since_epoch() % burst;
  return over.count() > 0 ? when + (burst - over) : when;
}

std::size_t cSimOutbox::countDue(cTimePoint now) {
  if (items.empty()) return 0;
  if (!isBegun) begin(now);
  return dueAt <= now ? chunk : 0;
}

bool cSimOutbox::markSent(std::size_t count, cTimePoint now) {
  sentBytes += count;
  chunk -= count;
  waiting -= count;
  if (sentBytes == items.front().record.bytes.size()) return true;
  // A full pty took a part: the rest of the chunk stays due.
  if (chunk == 0) planChunk(now - dueAt < MAX_CATCH_UP ? dueAt : now);
  return false;
}

cSimRecord cSimOutbox::pop() {
  cSimRecord record = std::move(items.front().record);
  items.pop_front();
  isBegun = false;
  sentBytes = 0;
  return record;
}
