#include "tools/terminal/viewFrame.h"

#include <fmt/format.h>

#include <algorithm>

#include "tools/base/plural.h"
#include "tools/base/printable.h"
#include "tools/terminal/cPolarPicture.h"

namespace tool {

namespace {

constexpr int LINES_BELOW = 2;
constexpr std::size_t MIN_NAME_WIDTH = 8;

bool isLost(const tarvo::cHealth& health) {
  return health.state == tarvo::eState::WAITING || health.state == tarvo::eState::STOPPED;
}

/// Where it does not fit the sensor's name is cut: it is the longest, and known.
std::string statusLine(const cViewStatus& status, bool hasScan, std::size_t width) {
  const tarvo::cHealth& health = status.health;
  const std::string age =
      hasScan ? fmt::format("{:.1f} s old", status.age) : "waiting for the first scan";
  if (isLost(health))
    return ("NO SCANS, " + age + ": " + oneLine(health.problem.message)).substr(0, width);
  const std::string rate = status.rate > 0 ? fmt::format("{:.1f}", status.rate) : "-";
  const std::string line =
      health.sensor
          ? fmt::format("{} | {} bits/s", toText(health.sensor->dialect), health.sensor->lineSpeed)
          : toText(health.state);
  const std::string rest = fmt::format(" | {} | {} scans/s | {} missing | {}", line, rate,
                                       health.damaged + health.lost, age);
  const std::string name = health.sensor ? sanitized(health.sensor->product) : "";
  const std::size_t room = width > rest.size() ? width - rest.size() : 0;
  return (name.substr(0, std::max(room, MIN_NAME_WIDTH)) + rest).substr(0, width);
}

std::string meaningOf(const cPolarPicture& picture) {
  std::string rings = "rings " + metres(picture.getRingStep()) + " apart";
  if (picture.countOutside() == 0) return rings;
  return fmt::format("{}, {} farther off", rings, plural(picture.countOutside(), "point"));
}

}  // namespace

std::vector<std::string> viewFrame(const cTerminalSize& size, const cPalette& palette,
                                   const cPolarScale& scale, const tarvo::cLaserScan* scan,
                                   const cViewStatus& status, const std::string& help) {
  cPolarPicture picture(size.columns, size.rows - LINES_BELOW, scale);
  if (scan != nullptr) {
    picture.draw(*scan);
  } else {
    picture.drawGrid();
  }
  auto lines = picture.lines(palette);
  const auto width = static_cast<std::size_t>(size.columns);
  lines.push_back(statusLine(status, scan != nullptr, width));
  const std::string meaning = meaningOf(picture);
  const std::string last = (help.empty() ? meaning : meaning + " | " + help).substr(0, width);
  lines.push_back(palette.faint() + last + palette.plain());
  lines.resize(static_cast<std::size_t>(std::clamp(size.rows, 1, static_cast<int>(lines.size()))));
  return lines;
}

}  // namespace tool
