#include "tools/cHeard.h"

#include <fmt/format.h>

#include <algorithm>

namespace tool {

namespace {

constexpr std::size_t SAMPLE_SIZE = 24;
constexpr auto ECHO_LINE = "VV\n";

bool isText(char c) { return (c >= ' ' && c <= '~') || c == '\n' || c == '\t'; }

std::string withoutReturns(std::string text) {
  text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
  return text;
}

eHeard kindOf(const std::string& bytes) {
  const std::string text = withoutReturns(bytes);
  if (text.empty()) return eHeard::NOTHING;
  const std::size_t echo = text.find(ECHO_LINE);
  const bool isEchoed = echo != std::string::npos;
  if (isEchoed && text.find_first_not_of('\n', echo + 3) != std::string::npos) {
    return eHeard::ANSWER;
  }
  if (isEchoed && text.find_first_not_of('\n') == echo) return eHeard::OWN_WORDS;
  return std::all_of(text.begin(), text.end(), isText) ? eHeard::TEXT : eHeard::GARBAGE;
}

std::string sampleOf(const std::string& bytes) {
  const std::string text = withoutReturns(bytes);
  const std::size_t begin = std::min(text.find_first_not_of('\n'), text.size());
  return text.substr(begin, std::min(text.find('\n', begin) - begin, SAMPLE_SIZE));
}

}  // namespace

const std::string cHeard::QUESTION = "\nVV\n";

cHeard::cHeard(const std::string& bytes)
    : kind(kindOf(bytes)), size(bytes.size()), sample(sampleOf(bytes)) {}

std::string cHeard::getText() const {
  switch (kind) {
    case eHeard::NOTHING:
      break;
    case eHeard::GARBAGE:
      return fmt::format("garbage ({} bytes)", size);
    case eHeard::TEXT:
      return fmt::format("text that is no answer, \"{}\" ({} bytes)", sample, size);
    case eHeard::OWN_WORDS:
      return "what was sent, and nothing else";
    case eHeard::ANSWER:
      return fmt::format("an answer in part ({} bytes)", size);
  }
  return "nothing";
}

std::string causeOf(eHeard best) {
  switch (best) {
    case eHeard::NOTHING:
      break;
    case eHeard::GARBAGE:
      return "Something talks there at another speed, or it is no such sensor. If you know the "
             "sensor's speed, give it (--speed); 'tarvolink list' shows the other devices.";
    case eHeard::TEXT:
      return "Another kind of device talks there: 'tarvolink list' shows the other ones.";
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
