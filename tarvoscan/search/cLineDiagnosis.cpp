#include "tarvoscan/search/cLineDiagnosis.h"

#include <fmt/format.h>

#include <algorithm>
#include <sstream>

namespace tarvo {

namespace {

constexpr std::size_t EXCERPT_SIZE = 24;

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

eLineContent contentOf(const cTraffic& traffic) {
  const auto sent = linesOf(traffic.sent);
  const auto lines = linesOf(traffic.received);
  const std::string& text = traffic.received;
  if (traffic.bytes == 0) return eLineContent::NOTHING;
  const auto wasSent = [&sent](const std::string& line) {
    return std::find(sent.begin(), sent.end(), line) != sent.end();
  };
  if (lines.empty()) return eLineContent::GARBAGE;
  if (std::all_of(lines.begin(), lines.end(), wasSent)) return eLineContent::ECHOED;
  if (std::any_of(lines.begin(), lines.end(), wasSent)) return eLineContent::ANSWER;
  return std::all_of(text.begin(), text.end(), isText) ? eLineContent::TEXT : eLineContent::GARBAGE;
}

std::string hintFor(eLineContent best) {
  switch (best) {
    case eLineContent::NOTHING:
      break;
    case eLineContent::GARBAGE:
      return "Something sends there at another line speed, or the device is something else.";
    case eLineContent::TEXT:
      return "Another kind of device sends there.";
    case eLineContent::ECHOED:
      return "The line's two data wires touch, or another kind of device echoes: look at the plug.";
    case eLineContent::ANSWER:
      return "A sensor is there, but its answers do not arrive whole. Look at the plugs, take a "
             "shorter "
             "cable, and see that no other program reads the port.";
  }
  return "Is the sensor powered, and its cable plugged in at both ends, with the two data wires "
         "crossed?";
}

}  // namespace

std::string cHeardAtSpeed::getText() const {
  switch (content) {
    case eLineContent::NOTHING:
      break;
    case eLineContent::GARBAGE:
      return fmt::format("garbage ({} bytes)", bytes);
    case eLineContent::TEXT:
      return fmt::format("text that is no answer, \"{}\" ({} bytes)", excerpt, bytes);
    case eLineContent::ECHOED:
      return "only an echo of what was sent";
    case eLineContent::ANSWER:
      return fmt::format("an answer in part ({} bytes)", bytes);
  }
  return "nothing";
}

cHeardAtSpeed classify(const cTraffic& traffic) {
  cHeardAtSpeed heard;
  heard.lineSpeed = traffic.lineSpeed;
  heard.content = contentOf(traffic);
  heard.bytes = traffic.bytes;
  if (heard.content == eLineContent::TEXT) {
    heard.excerpt = linesOf(traffic.received).front().substr(0, EXCERPT_SIZE);
    std::replace(heard.excerpt.begin(), heard.excerpt.end(), '\t', ' ');
  }
  return heard;
}

std::vector<cHeardAtSpeed> classifyAll(const std::vector<cTraffic>& capture) {
  std::vector<cHeardAtSpeed> all;
  all.reserve(capture.size());
  for (const cTraffic& traffic : capture) all.push_back(classify(traffic));
  return all;
}

cProblem describeSilence(const std::string& device, const std::vector<cHeardAtSpeed>& heard) {
  std::string text;
  eLineContent best = eLineContent::NOTHING;
  for (const cHeardAtSpeed& each : heard) {
    text +=
        fmt::format("{}at {} bits/s {}", text.empty() ? "" : ", ", each.lineSpeed, each.getText());
    best = std::max(best, each.content);
  }
  return {eProblem::NO_SENSOR,
          fmt::format("no sensor answers on {}. Heard there when asked: {}.", device,
                      text.empty() ? "nothing" : text),
          hintFor(best)};
}

}  // namespace tarvo
