#include "sim/cSimFaults.h"

namespace {

bool matches(const std::string& target, eSimFault fault, const cSimRecord& record) {
  // A running scan has no command to be answered, so these two pass it by unless it is named.
  const bool answersOnly = fault == eSimFault::LATE || fault == eSimFault::NO_ANSWER;
  if (target.empty()) return !(answersOnly && record.running);
  if (target == "scan") return record.running;
  if (target == "answer") return !record.running;
  return record.bytes.compare(0, target.size(), target) == 0;
}

}  // namespace

void cSimFaults::set(eSimFault fault, int value, const std::string& target, int times) {
  std::lock_guard<std::mutex> lock(mutex);
  entries[indexOf(fault)] = cEntry{value, target, times};
}

void cSimFaults::clear(eSimFault fault) {
  std::lock_guard<std::mutex> lock(mutex);
  entries[indexOf(fault)].reset();
}

void cSimFaults::clearAll() {
  std::lock_guard<std::mutex> lock(mutex);
  for (auto& entry : entries) entry.reset();
}

std::optional<int> cSimFaults::valueOf(eSimFault fault) const {
  std::lock_guard<std::mutex> lock(mutex);
  const auto& entry = entries[indexOf(fault)];
  return entry ? std::optional<int>(entry->value) : std::nullopt;
}

std::optional<int> cSimFaults::consume(eSimFault fault, const cSimRecord& record) {
  std::lock_guard<std::mutex> lock(mutex);
  auto& entry = entries[indexOf(fault)];
  if (!entry || !matches(entry->target, fault, record)) return std::nullopt;
  const int value = entry->value;
  if (entry->remaining > 0 && --entry->remaining == 0) entry.reset();
  return value;
}
