#include <climits>

#include "sim/cSimCode.h"
#include "sim/cSimScip2.h"
#include "sim/cSimText.h"

namespace {

constexpr int MAX_MS_READING = 4095;  // two characters of six bits

std::string twoDigits(int value) {
  const char digits[] = {static_cast<char>('0' + value / 10), static_cast<char>('0' + value % 10)};
  return std::string(digits, 2);
}

cSimTask taskOf(const std::string& name, const std::string& text) {
  cSimTask task;
  task.first = std::stoi(text.substr(0, 4));
  task.last = std::stoi(text.substr(4, 4));
  task.cluster = std::stoi(text.substr(8, 2));
  task.wide = name[1] == 'D';
  return task;
}

}  // namespace

std::string cSimScip2::rangeError(const std::string& text) const {
  if (!cSimText::isNumber(text.substr(0, 4))) return "01";
  if (!cSimText::isNumber(text.substr(4, 4))) return "02";
  if (!cSimText::isNumber(text.substr(8, 2))) return "03";
  const int last = std::stoi(text.substr(4, 4));
  if (last > model.last) return "04";
  return last < std::stoi(text.substr(0, 4)) ? "05" : "";
}

// Statuses in the order of the parameters, then those of their values: 06 and 07 come before 04 and
// 05, although the range stands in front.
cSimRecord cSimScip2::measure(const cCall& call) {
  const std::string& text = call.arguments;
  const std::string error = rangeError(text);
  const bool isNotNumeric = !error.empty() && error < "04";
  if (isNotNumeric) return reply(call.line, error);
  if (!cSimText::isDigit(text[10])) return reply(call.line, "06");
  if (!cSimText::isNumber(text.substr(11, 2))) return reply(call.line, "07");
  if (!error.empty()) return reply(call.line, error);

  cSimTask task = taskOf(call.name, text);
  task.head = call.name + text.substr(0, 11);
  task.tail = call.tail;
  task.interval = text[10] - '0';
  task.remaining = std::stoi(text.substr(11, 2));
  task.endless = task.remaining == 0;
  // MD and MS switch the laser on by themselves, and the new task replaces a running one.
  state.task = task;
  state.laser = true;
  cSimRecord record = reply(call.line, "00");
  record.starts = true;
  return record;
}

cSimRecord cSimScip2::stored(const cCall& call) {
  const std::string error = rangeError(call.arguments);
  if (!error.empty()) return reply(call.line, error);
  // Unlike MD, a GD needs a BM before it.
  if (!state.laser) return reply(call.line, "10");
  const cSimClock& clock = call.clock;
  cSimRecord record =
      reply(call.line, "00",
            scanBody(taskOf(call.name, call.arguments), clock.lastScan, clock.lastStamp));
  record.scan = clock.lastScan;
  return record;
}

// The time stamp is 24 bits of milliseconds and wraps around after 4 h 39 min.
std::string cSimScip2::scanBody(const cSimTask& task, std::uint32_t number,
                                std::uint32_t stamp) const {
  const auto readings =
      world.scan(number, task.first, task.last, task.cluster, task.wide ? INT_MAX : MAX_MS_READING);
  return cSimCode::withSum(cSimCode::encode(stamp & 0xFFFFFF, 4)) +
         cSimCode::dataLines(cSimCode::encode(readings, task.wide ? 3 : 2), true);
}

// The echo's last two digits count the scans still to come, so they are new in each record; in an
// endless scan they stay 00.
cSimRecord cSimScip2::makeScan(std::uint32_t number, std::uint32_t stamp) {
  cSimTask& task = *state.task;
  if (!task.endless) --task.remaining;
  cSimRecord record =
      reply(task.head + twoDigits(task.remaining) + task.tail, "99", scanBody(task, number, stamp));
  record.scan = number;
  record.running = true;
  if (!task.endless && task.remaining == 0) {
    state.task.reset();
    state.laser = false;
  }
  return record;
}
