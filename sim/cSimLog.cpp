#include "sim/cSimLog.h"

#include <algorithm>

namespace {
template <class tEntry>
void append(std::deque<tEntry>& log, const tEntry& entry) {
  log.push_back(entry);
  if (log.size() > cSimLog::MAX_ENTRIES) log.pop_front();
}
}  // namespace

void cSimLog::addReceived(std::size_t bytes) {
  change([&] { counters.bytesReceived += bytes; });
}

void cSimLog::addCommand(const std::string& line) {
  change([&] {
    ++counters.commands;
    append(commands, line);
  });
}

// Wakes no one, since it is called for every chunk: a wait for bytesWritten ends when the record
// does.
void cSimLog::addWritten(std::size_t bytes) {
  std::lock_guard<std::mutex> lock(mutex);
  counters.bytesWritten += bytes;
}

void cSimLog::addRecord(const cSimRecord& record) {
  change([&] {
    ++counters.records;
    if (!record.scan || record.cut) return;
    ++counters.scans;
    append(scans, *record.scan);
  });
}

void cSimLog::addSkippedScans(std::uint64_t count) {
  change([&] { counters.skippedScans += count; });
}

void cSimLog::addDroppedAnswer() {
  change([&] { ++counters.droppedAnswers; });
}

std::vector<std::uint32_t> cSimLog::getSentScans() const {
  std::lock_guard<std::mutex> lock(mutex);
  return {scans.begin(), scans.end()};
}

std::vector<std::string> cSimLog::getCommands() const {
  std::lock_guard<std::mutex> lock(mutex);
  return {commands.begin(), commands.end()};
}

cSimCounters cSimLog::getCounters() const {
  std::lock_guard<std::mutex> lock(mutex);
  return counters;
}

bool cSimLog::waitFor(std::uint64_t cSimCounters::*counter, std::uint64_t count,
                      cTimeOut timeOut) const {
  std::unique_lock<std::mutex> lock(mutex);
  return changed.wait_for(lock, timeOut, [&] { return counters.*counter >= count; });
}

bool cSimLog::waitForCommand(const std::string& prefix, std::size_t count, cTimeOut timeOut) const {
  const auto begins = [&](const std::string& line) {
    return line.compare(0, prefix.size(), prefix) == 0;
  };
  std::unique_lock<std::mutex> lock(mutex);
  return changed.wait_for(lock, timeOut, [&] {
    return static_cast<std::size_t>(std::count_if(commands.begin(), commands.end(), begins)) >=
           count;
  });
}
