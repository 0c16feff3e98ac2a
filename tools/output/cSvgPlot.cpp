#include "tools/output/cSvgPlot.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

namespace tool {

namespace {

constexpr double PI = 3.14159265358979323846;
constexpr int WIDTH = 1000;
constexpr int HEIGHT = 1090;
constexpr double MIDDLE_X = 500;
constexpr double MIDDLE_Y = 580;
constexpr double RADIUS = 430;  // of the scale's reach
constexpr double LABEL_GAP = 22;
constexpr int MAX_RINGS = 5;
constexpr int DEGREES_A_RAY = 30;
constexpr double GAP_STEPS = 1.5;  // readings farther apart than that have an invalid one between

// Colours and letters in one place; classes also tell those who process a drawing what is what.
constexpr auto STYLE = R"(  <style>
    text { font-family: "DejaVu Sans", Helvetica, Arial, sans-serif; fill: #5b6670; }
    .title { font-size: 26px; font-weight: bold; fill: #1c2733; }
    .subtitle { font-size: 16px; }
    .ring, .ray { fill: none; stroke: #c9d0d6; stroke-width: 1; }
    .ring-label { font-size: 14px; paint-options: stroke; stroke: #ffffff; stroke-width: 6px; }
    .angle-label { font-size: 14px; }
    .free { fill: #dcebf9; stroke: none; }
    .reading { fill: #0a5ba8; }
    .sensor { fill: #d1411f; }
  </style>
)";

std::string escaped(const std::string& raw) {
  std::string safe;
  for (const char c : raw) {
    switch (c) {
      case '&':
        safe += "&amp;";
        break;
      case '<':
        safe += "&lt;";
        break;
      case '>':
        safe += "&gt;";
        break;
      default:
        safe += c;
    }
  }
  return safe;
}

std::string label(const char* kind, double x, double y, const std::string& content,
                  const char* anchor = "middle") {
  return fmt::format(
      "  <text class=\"{}\" x=\"{:.1f}\" y=\"{:.1f}\" text-anchor=\"{}\">{}</text>\n", kind, x, y,
      anchor, escaped(content));
}

double farthestOf(const std::vector<cReading>& readings) {
  double farthest = 0;
  for (const cReading& reading : readings) farthest = std::max(farthest, reading.distance);
  return farthest;
}

}  // namespace

cSvgPlot::cSvgPlot(const tarvo::cLaserScan& scan, const std::string& title,
                   const std::string& subtitle)
    : readings(readingsOf(scan)),
      angleStep(scan.angleIncrement),
      scale(cPolarScale::covering(farthestOf(readings))),
      text(fmt::format("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                       "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"{0}\" height=\"{1}\" "
                       "viewBox=\"0 0 {0} {1}\">\n{2}"
                       "  <rect width=\"{0}\" height=\"{1}\" fill=\"#ffffff\"/>\n",
                       WIDTH, HEIGHT, STYLE)) {
  drawFreeSpace();
  drawRings();
  drawAngles();
  drawReadings();
  drawTexts(title, subtitle);
  text += "</svg>\n";
}

cPosition cSvgPlot::onPaper(double distance, double angle) const {
  const cPosition position = positionAt(distance / scale.getReach() * RADIUS, angle);
  return {MIDDLE_X + position.right, MIDDLE_Y - position.up};
}

/// From the sensor to the readings, each run of neighbours a shape of its own: nothing is said of
/// what lies between where a reading is invalid.
void cSvgPlot::drawFreeSpace() {
  text += "  <path class=\"free\" d=\"";
  const cReading* last = nullptr;
  for (const cReading& point : readings) {
    const cPosition at = onPaper(point.distance, point.angle);
    const bool isNext = last != nullptr && point.angle - last->angle < GAP_STEPS * angleStep;
    if (!isNext) text += fmt::format("M{} {}", MIDDLE_X, MIDDLE_Y);
    fmt::format_to(std::back_inserter(text), "L{:.1f} {:.1f}", at.right, at.up);
    last = &point;
  }
  text += "\"/>\n";
}

void cSvgPlot::drawRings() {
  const double step = scale.getRingStep(MAX_RINGS);
  const double reach = scale.getReach();
  const auto ring = [&](double distance) {
    text += fmt::format("  <circle class=\"ring\" cx=\"{}\" cy=\"{}\" r=\"{:.1f}\"/>\n", MIDDLE_X,
                        MIDDLE_Y, distance / reach * RADIUS);
  };
  for (int i = 1; i * step < reach; ++i) ring(i * step);
  ring(reach);
}

void cSvgPlot::drawAngles() {
  for (int degrees = -180 + DEGREES_A_RAY; degrees <= 180; degrees += DEGREES_A_RAY) {
    const double angle = degrees * PI / 180;
    const cPosition edge = onPaper(scale.getReach(), angle);
    const cPosition name = onPaper(scale.getReach() * (1 + LABEL_GAP / RADIUS), angle);
    text += fmt::format("  <line class=\"ray\" x1=\"{}\" y1=\"{}\" x2=\"{:.1f}\" y2=\"{:.1f}\"/>\n",
                        MIDDLE_X, MIDDLE_Y, edge.right, edge.up);
    text += label("angle-label", name.right, name.up + 5, fmt::format("{}°", degrees));
  }
}

void cSvgPlot::drawReadings() {
  for (const cReading& point : readings) {
    const cPosition at = onPaper(point.distance, point.angle);
    fmt::format_to(std::back_inserter(text),
                   "  <circle class=\"reading\" cx=\"{:.1f}\" cy=\"{:.1f}\" r=\"1.8\"/>\n",
                   at.right, at.up);
  }
  fmt::format_to(std::back_inserter(text), "  <path class=\"sensor\" d=\"M{} {}l8 18h-16z\"/>\n",
                 MIDDLE_X, MIDDLE_Y - 10);
}

/// Ring labels stand straight behind the sensor, where it sees nothing.
void cSvgPlot::drawTexts(const std::string& title, const std::string& subtitle) {
  const double step = scale.getRingStep(MAX_RINGS);
  for (int i = 1; i * step <= scale.getReach(); ++i) {
    const cPosition at = onPaper(i * step, PI);
    text += label("ring-label", at.right, at.up - 4, metres(i * step));
  }
  text += label("title", 40, 52, title, "start");
  text += label("subtitle", 40, 80, subtitle, "start");
  text += label("subtitle", 40, HEIGHT - 18,
                "Distances in metres; angles in degrees, anti-clockwise from the front.", "start");
}

}  // namespace tool
