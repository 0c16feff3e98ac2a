#include "tarvoscan/search/cConversation.h"

#include <fmt/format.h>

#include <algorithm>

namespace tarvo {

namespace {

using std::chrono::milliseconds;

// A record of the family's slowest line (2137 bytes at 19200 bits/s) takes 1.1 s.
constexpr milliseconds LONGEST_RECORD{2500};

// A late answer begins within this of the silence before it, and ends within that.
constexpr milliseconds LEFTOVER_PAUSE{120};
constexpr milliseconds LEFTOVER_LIMIT{800};

constexpr milliseconds SEND_LIMIT{300};

bool isDigit(char c) { return c >= '0' && c <= '9'; }

}  // namespace

std::string printable(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
  return text;
}

bool stripSum(std::string_view& line) {
  if (line.empty()) return false;
  const char sum = line.back();
  line.remove_suffix(1);
  return cSCIP2Comm::getSum(line) == sum;
}

bool nextLine(std::string_view& text, std::string_view& line) {
  if (text.empty()) return false;
  const std::size_t end = text.find('\n');
  line = text.substr(0, end);
  text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  return true;
}

std::string toText(const cAnswer& answer) {
  switch (answer.kind) {
    case eAnswer::GOOD:
      return "succeeded";
    case eAnswer::REFUSED:
      return fmt::format("was refused with status {}", printable(answer.status));
    case eAnswer::DAMAGED:
      return "got an answer that was damaged";
    case eAnswer::STOPPED:
      return "was not awaited, since the scanner stops";
    case eAnswer::GONE:
      return "got no answer: the device has gone";
    case eAnswer::SILENCE:
      break;
  }
  return "got no answer";
}

cConversation::cConversation(boost::shared_ptr<cScanPort> port) : port(port), link(port) {}

std::string cConversation::send(const std::string& command) {
  if (std::exchange(hasLeftovers, false)) port->skipUntilSilent(LEFTOVER_PAUSE, LEFTOVER_LIMIT);
  const std::string line = scip2 ? fmt::format("{};{}", command, nextTag++) : command;
  return port->send(line + cTarvoLink::SEND_EOL, SEND_LIMIT) ? line : "";
}

bool cConversation::receive(cScanPort::cClock::time_point deadline, bool isWakeable) {
  port->beginRecord(deadline, std::max(deadline, cScanPort::cClock::now()) + LONGEST_RECORD,
                    isWakeable);
  return link.recvRecord(record);
}

cAnswer cConversation::ask(const std::string& command, milliseconds timeout) {
  const std::string echo = send(command);
  if (echo.empty()) return {port->isGone() ? eAnswer::GONE : eAnswer::SILENCE, {}, {}};
  cAnswer answer = receiveAnswer(echo, cScanPort::cClock::now() + timeout);
  hasLeftovers = answer.kind == eAnswer::DAMAGED || answer.kind == eAnswer::SILENCE;
  return answer;
}

cAnswer cConversation::ask(const std::string& command, milliseconds timeout, int tries) {
  cAnswer answer;
  for (int i = 0; i < tries; ++i) {
    answer = ask(command, timeout);
    if (answer.kind != eAnswer::SILENCE && answer.kind != eAnswer::DAMAGED) break;
  }
  return answer;
}

cAnswer cConversation::receiveAnswer(const std::string& echo,
                                     cScanPort::cClock::time_point deadline) {
  bool isAnything = false;
  for (;;) {
    const bool isWhole = receive(deadline, false);
    if (isWhole && record.echo == echo) return readAnswer();
    if (port->getEnd() == cScanPort::eEnd::STOPPED) return {eAnswer::STOPPED, {}, {}};
    if (port->getEnd() == cScanPort::eEnd::GONE) return {eAnswer::GONE, {}, {}};
    isAnything = isAnything || port->getArrival() != 0;
    if (cScanPort::cClock::now() >= deadline) break;
  }
  return {isAnything ? eAnswer::DAMAGED : eAnswer::SILENCE, {}, {}};
}

cAnswer cConversation::readAnswer() const {
  std::string_view status = record.status;
  const bool isSound =
      scip2 ? status.size() == 3 && stripSum(status) : status.size() == 1 && isDigit(status[0]);
  if (!isSound) return {eAnswer::DAMAGED, {}, {}};
  const bool isGood = status == (scip2 ? "00" : "0");
  return {isGood ? eAnswer::GOOD : eAnswer::REFUSED, std::string(status), record.body};
}

}  // namespace tarvo
