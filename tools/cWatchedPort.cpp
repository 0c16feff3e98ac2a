#include "tools/cWatchedPort.h"

#include <algorithm>

namespace tool {

namespace {

constexpr std::size_t MOST = 4096;
constexpr char TAG_MARK = ';';

// The library waits 2 s for an answer in SCIP 2.0, but sends no next command before a record ends.
constexpr std::chrono::milliseconds PATIENCE{2100};
// In SCIP 1.x an answer begins within 300 ms, and ends within 200 at the slowest speed.
constexpr std::chrono::milliseconds OLD_PATIENCE{800};

void appendSome(std::string& text, std::string_view more) {
  text.append(more.substr(0, MOST - std::min(text.size(), MOST)));
}

/// "TM2" of "\n\nTM2;7\n".
std::string commandOf(std::string_view line) {
  line.remove_prefix(std::min(line.find_first_not_of('\n'), line.size()));
  const char ends[] = {TAG_MARK, '\n'};
  return std::string(line.substr(0, line.find_first_of(std::string_view(ends, sizeof ends))));
}

}  // namespace

void cWatchedPort::watch(int speed, std::chrono::milliseconds patience) {
  const std::lock_guard<std::mutex> lock(mutex);
  const auto known = std::find_if(traffic.begin(), traffic.end(),
                                  [speed](const cTraffic& each) { return each.speed == speed; });
  latest = static_cast<std::size_t>(known - traffic.begin());
  if (known == traffic.end()) traffic.push_back({speed});
  traffic[latest].lastCommand.clear();
  listenUntil(cClock::now() + patience);
  isWatching = true;
}

void cWatchedPort::ignore() {
  const std::lock_guard<std::mutex> lock(mutex);
  isWatching = false;
  if (isEnded) interruptReads(false);
}

cTraffic cWatchedPort::getTraffic() const {
  const std::lock_guard<std::mutex> lock(mutex);
  return traffic.empty() ? cTraffic{} : traffic[latest];
}

std::vector<cTraffic> cWatchedPort::getAllTraffic() const {
  const std::lock_guard<std::mutex> lock(mutex);
  return traffic;
}

cWatchedPort::int_type cWatchedPort::underflow() {
  const bool isRead = gptr() == egptr();
  if (isRead) endIfOverdue();
  const int_type next = basic_portbuf::underflow();
  if (isRead) noteReceived({gptr(), static_cast<std::size_t>(egptr() - gptr())});
  return next;
}

std::streamsize cWatchedPort::xsputn(const char* s, std::streamsize n) {
  noteSent({s, static_cast<std::size_t>(n)});
  return basic_portbuf::xsputn(s, n);
}

/// An interrupted read is what the library makes of the end of its own patience.
void cWatchedPort::endIfOverdue() {
  const std::lock_guard<std::mutex> lock(mutex);
  if (!isWatching || isEnded || cClock::now() < deadline) return;
  isEnded = true;
  interruptReads(true);
}

void cWatchedPort::noteReceived(std::string_view characters) {
  const std::lock_guard<std::mutex> lock(mutex);
  if (traffic.empty()) return;
  traffic[latest].heard += characters.size();
  if (isWatching) appendSome(traffic[latest].received, characters);
}

void cWatchedPort::noteSent(std::string_view characters) {
  const std::lock_guard<std::mutex> lock(mutex);
  if (!isWatching) return;
  appendSome(traffic[latest].sent, characters);
  traffic[latest].lastCommand = commandOf(characters);
  listenUntil(cClock::now() + (traffic[latest].isOld() ? OLD_PATIENCE : PATIENCE));
}

/// Under mutex.
void cWatchedPort::listenUntil(cClock::time_point end) {
  deadline = end;
  if (isEnded) interruptReads(false);
  isEnded = false;
}

}  // namespace tool
