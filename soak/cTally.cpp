#include "soak/cTally.h"

#include <sstream>

void cTally::addDelivered() {
  std::lock_guard<std::mutex> lock(mutex);
  ++delivered;
}

void cTally::addUntrue() {
  std::lock_guard<std::mutex> lock(mutex);
  ++untrue;
}

void cTally::addTold(std::uint64_t count) {
  std::lock_guard<std::mutex> lock(mutex);
  told += count;
}

void cTally::addLost(const char* fault) {
  std::lock_guard<std::mutex> lock(mutex);
  ++(fault == nullptr ? unexplained : lost[fault]);
}

bool cTally::isSound() const {
  std::lock_guard<std::mutex> lock(mutex);
  return untrue == 0 && unexplained == 0 && delivered > 0;
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
       << " lost without a fault, " << untrue << " untrue, " << told
       << " told by their size; lost to" << reasons.str();
  return text.str();
}
