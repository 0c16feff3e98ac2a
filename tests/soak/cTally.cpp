#include "tests/soak/cTally.h"

#include <sstream>

void cTally::addDelivered() {
  std::lock_guard<std::mutex> lock(mutex);
  ++delivered;
}

void cTally::addWrong() {
  std::lock_guard<std::mutex> lock(mutex);
  ++wrong;
}

void cTally::addFlagged(std::uint64_t count) {
  std::lock_guard<std::mutex> lock(mutex);
  flagged += count;
}

void cTally::addLost(const char* fault) {
  std::lock_guard<std::mutex> lock(mutex);
  ++(fault == nullptr ? unexplained : lost[fault]);
}

void cTally::addStuck() {
  std::lock_guard<std::mutex> lock(mutex);
  ++stuck;
}

bool cTally::passed() const {
  std::lock_guard<std::mutex> lock(mutex);
  return wrong == 0 && unexplained == 0 && stuck == 0 && delivered > 0;
}

std::string cTally::describe() const {
  std::lock_guard<std::mutex> lock(mutex);
  std::uint64_t sent = delivered + unexplained;
  std::ostringstream reasons;
  for (const auto& [fault, count] : lost) {
    reasons << ' ' << fault << ' ' << count;
    sent += count;
  }
  std::ostringstream text;
  text << sent << " sent, " << delivered << " delivered, " << unexplained
       << " lost without a fault, " << wrong << " wrong, " << flagged << " flagged by their size, "
       << stuck << " times stuck; lost to" << reasons.str();
  return text.str();
}
