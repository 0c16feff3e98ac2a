#include "tools/cWatchedPort.h"

#include <algorithm>

namespace tool {

namespace {

constexpr std::size_t MOST = 4096;
constexpr char TAG_MARK = ';';

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

void cWatchedPort::watch(int speed) {
  const std::lock_guard<std::mutex> lock(mutex);
  const auto known = std::find_if(traffic.begin(), traffic.end(),
                                  [speed](const cTraffic& each) { return each.speed == speed; });
  latest = static_cast<std::size_t>(known - traffic.begin());
  if (known == traffic.end()) traffic.push_back({speed});
  traffic[latest].lastCommand.clear();
  isWatching = true;
}

void cWatchedPort::ignore() {
  const std::lock_guard<std::mutex> lock(mutex);
  isWatching = false;
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
  const int_type next = basic_portbuf::underflow();
  if (isRead) noteReceived({gptr(), static_cast<std::size_t>(egptr() - gptr())});
  return next;
}

std::streamsize cWatchedPort::xsputn(const char* s, std::streamsize n) {
  noteSent({s, static_cast<std::size_t>(n)});
  return basic_portbuf::xsputn(s, n);
}

void cWatchedPort::noteReceived(std::string_view characters) {
  const std::lock_guard<std::mutex> lock(mutex);
  if (!isWatching) return;
  appendSome(traffic[latest].received, characters);
  traffic[latest].heard += characters.size();
}

void cWatchedPort::noteSent(std::string_view characters) {
  const std::lock_guard<std::mutex> lock(mutex);
  if (!isWatching) return;
  appendSome(traffic[latest].sent, characters);
  traffic[latest].lastCommand = commandOf(characters);
}

}  // namespace tool
