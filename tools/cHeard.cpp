#include "tools/cHeard.h"

#include <fmt/format.h>

#include <algorithm>
#include <sstream>
#include <vector>

#include "tools/plural.h"
#include "tools/printable.h"

namespace tool {

namespace {

constexpr std::size_t SAMPLE_SIZE = 24;

bool isText(char c) { return (c >= ' ' && c <= '~') || c == '\n' || c == '\r' || c == '\t'; }

/// The lines that are not empty; carriage returns end lines too.
std::vector<std::string> linesOf(std::string text) {
  std::replace(text.begin(), text.end(), '\r', '\n');
  std::istringstream stream(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) {
    if (!line.empty()) lines.push_back(line);
  }
  return lines;
}

eHeard kindOf(const cTraffic& traffic) {
  const auto said = linesOf(traffic.sent);
  const auto lines = linesOf(traffic.received);
  if (traffic.heard == 0) return eHeard::NOTHING;
  const auto isOwn = [&said](const std::string& line) {
    return std::find(said.begin(), said.end(), line) != said.end();
  };
  if (std::any_of(lines.begin(), lines.end(), isOwn)) {
    const bool isEcho = std::all_of(lines.begin(), lines.end(), isOwn);
    return isEcho ? eHeard::OWN_WORDS : eHeard::ANSWER;
  }
  if (lines.empty()) return eHeard::LINE_ENDS;
  const std::string& text = traffic.received;
  return std::all_of(text.begin(), text.end(), isText) ? eHeard::TEXT : eHeard::GARBAGE;
}

std::string sampleOf(const std::string& text) {
  const auto lines = linesOf(text);
  return lines.empty() ? "" : lines.front().substr(0, SAMPLE_SIZE);
}

}  // namespace

cHeard::cHeard(const cTraffic& traffic)
    : kind(kindOf(traffic)), size(traffic.heard), sample(sampleOf(traffic.received)) {}

std::string cHeard::getText() const {
  switch (kind) {
    case eHeard::NOTHING:
      break;
    case eHeard::GARBAGE:
      return fmt::format("garbage ({})", plural(size, "byte"));
    case eHeard::LINE_ENDS:
      return fmt::format("line ends alone ({})", plural(size, "byte"));
    case eHeard::TEXT:
      return fmt::format("text that is no answer, \"{}\" ({})", oneLine(sample),
                         plural(size, "byte"));
    case eHeard::OWN_WORDS:
      return "only an echo of what was sent";
    case eHeard::ANSWER:
      return fmt::format("an answer in part ({})", plural(size, "byte"));
  }
  return "nothing";
}

std::string causeOf(eHeard best) {
  switch (best) {
    case eHeard::NOTHING:
      break;
    case eHeard::LINE_ENDS:
    case eHeard::GARBAGE:
      return "Something talks there at another speed, or the device is something else. If you "
             "know the sensor's speed, give it (--speed); 'tarvolink list' shows the other "
             "devices.";
    case eHeard::TEXT:
      return "Another kind of device talks there: 'tarvolink list' shows the other devices.";
    case eHeard::OWN_WORDS:
      return "The line's two data wires touch, or another kind of device echoes: look at the plug, "
             "and at the other devices ('tarvolink list').";
    case eHeard::ANSWER:
      return "A sensor is there, but its answers do not come whole. Look at the plugs, take a "
             "shorter cable, see that no other program reads the port, and try again.";
  }
  return "Is the sensor powered, and its cable plugged in at both ends, with the two data wires "
         "crossed? Is it the right device ('tarvolink list' shows the others)?";
}

}  // namespace tool
