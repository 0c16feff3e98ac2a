#include "sim/cSimCode.h"

char cSimCode::sum(const std::string& text) {
  unsigned total = 0;
  for (char c : text) total += static_cast<unsigned char>(c);
  return static_cast<char>((total & 0x3F) + 0x30);
}

std::string cSimCode::withSum(const std::string& text) { return text + sum(text) + '\n'; }

std::string cSimCode::encode(unsigned value, int width) {
  std::string text(static_cast<std::size_t>(width), '0');
  for (auto place = text.rbegin(); place != text.rend(); ++place, value >>= 6)
    *place = static_cast<char>((value & 0x3F) + 0x30);
  return text;
}

// Appends to one reserved text, not value by value as the other does: this runs for each reading of
// each scan, and a benchmark runs dozens of sensors.
std::string cSimCode::encode(const std::vector<int>& values, int width) {
  std::string text;
  text.reserve(values.size() * static_cast<std::size_t>(width));
  for (int value : values)
    for (int shift = 6 * (width - 1); shift >= 0; shift -= 6)
      text += static_cast<char>(((static_cast<unsigned>(value) >> shift) & 0x3F) + 0x30);
  return text;
}

std::string cSimCode::dataLines(const std::string& data, bool sums) {
  std::string text;
  text.reserve(data.size() + 2 * (data.size() / LINE + 1));
  for (std::size_t at = 0; at < data.size(); at += LINE) {
    const std::string line = data.substr(at, LINE);
    text += sums ? withSum(line) : line + '\n';
  }
  return text;
}
