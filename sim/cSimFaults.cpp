#include "sim/cSimFaults.h"

namespace {

bool harms(const std::string& only, eSimFault fault, const cSimRecord& record) {
  const bool answersOnly = fault == eSimFault::LATE || fault == eSimFault::NO_ANSWER;
  if (only.empty()) return !(answersOnly && record.running);
  if (only == "scan") return record.running;
  if (only == "answer") return !record.running;
  return record.bytes.compare(0, only.size(), only) == 0;
}

}  // namespace

void cSimFaults::set(eSimFault fault, int value, const std::string& only, int times) {
  std::lock_guard<std::mutex> lock(mutex);
  entries[placeOf(fault)] = cEntry{value, only, times};
}

void cSimFaults::clear(eSimFault fault) {
  std::lock_guard<std::mutex> lock(mutex);
  entries[placeOf(fault)].reset();
}

void cSimFaults::clearAll() {
  std::lock_guard<std::mutex> lock(mutex);
  for (auto& entry : entries) entry.reset();
}

std::optional<int> cSimFaults::valueOf(eSimFault fault) const {
  std::lock_guard<std::mutex> lock(mutex);
  const auto& entry = entries[placeOf(fault)];
  return entry ? std::optional<int>(entry->value) : std::nullopt;
}

std::optional<int> cSimFaults::take(eSimFault fault, const cSimRecord& record) {
  std::lock_guard<std::mutex> lock(mutex);
  auto& entry = entries[placeOf(fault)];
  if (!entry || !harms(entry->only, fault, record)) return std::nullopt;
  const int value = entry->value;
  if (entry->left > 0 && --entry->left == 0) entry.reset();
  return value;
}
