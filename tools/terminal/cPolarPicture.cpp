#include "tools/terminal/cPolarPicture.h"

#include <algorithm>
#include <cmath>

namespace tool {

namespace {

constexpr double PI = 3.14159265358979323846;
constexpr int MAX_RINGS = 5;
constexpr int ROWS_A_RING = 2;          // its label and a free row
constexpr double RING_DOT_SPACING = 4;  // from one dot of a ring to the next
constexpr double RAY_DOT_SPACING = 3;

int rounded(double dots) { return static_cast<int>(std::lround(dots)); }

}  // namespace

cPolarPicture::cPolarPicture(int columnCount, int rowCount, const cPolarScale& scale)
    : columns(std::max(columnCount, 0)),
      rows(std::max(rowCount, 0)),
      scale(scale),
      middleColumn(columns / 2),
      middleRow(rows / 2),
      middleX(middleColumn * cBrailleCanvas::DOTS_ACROSS + 0.5),
      middleY(middleRow * cBrailleCanvas::DOTS_DOWN + 1.5),
      dotsToEdge(std::max(1.0, std::min(columns * cBrailleCanvas::DOTS_ACROSS - 1 - middleX,
                                        rows * cBrailleCanvas::DOTS_DOWN - 1 - middleY))),
      dotsPerMillimetre(dotsToEdge / scale.getReach()),
      canvas(columns, rows),
      outermost(scale.getReach()) {}

int cPolarPicture::mostRings() const {
  return std::clamp((rows - middleRow) / ROWS_A_RING, 1, MAX_RINGS);
}

void cPolarPicture::draw(const tarvo::cLaserScan& scan) {
  for (const cReading& reading : readingsOf(scan)) drawReading(reading);
  drawRay(scan.angleMin);
  drawRay(scan.angleMax);
  drawGrid();
}

void cPolarPicture::drawReading(const cReading& reading) {
  const cPosition position = positionAt(reading.distance * dotsPerMillimetre, reading.angle);
  const int x = rounded(middleX + position.right);
  const int y = rounded(middleY - position.up);
  if (!canvas.holds(x, y)) {
    ++outside;
    return;
  }
  canvas.readingDot(x, y, reading.distance / scale.getReach());
  outermost = std::max(outermost, reading.distance);
}

void cPolarPicture::drawGrid() {
  const double step = getRingStep();
  const int rings = static_cast<int>(outermost / step);
  for (int ring = 1; ring <= rings; ++ring) drawRing(ring * step);
  for (int ring = 1; ring <= rings; ++ring) labelRing(ring * step);
  canvas.write(middleColumn, middleRow, std::vector<std::string>{"▲"});
}

void cPolarPicture::drawRing(double distance) {
  const double radius = distance * dotsPerMillimetre;
  const int count = std::max(8, rounded(2 * PI * radius / RING_DOT_SPACING));
  for (int i = 0; i < count; ++i) {
    const cPosition dot = positionAt(radius, 2 * PI * i / count);
    canvas.gridDot(rounded(middleX + dot.right), rounded(middleY - dot.up));
  }
}

void cPolarPicture::drawRay(double angle) {
  const int dots = static_cast<int>(dotsToEdge / RAY_DOT_SPACING);
  for (int i = 1; i <= dots; ++i) {
    const cPosition dot = positionAt(i * RAY_DOT_SPACING, angle);
    canvas.gridDot(rounded(middleX + dot.right), rounded(middleY - dot.up));
  }
}

/// Straight behind the sensor, where it sees nothing; a ring that is cut off there has its label
/// where it leaves the picture on the right.
void cPolarPicture::labelRing(double distance) {
  const double radius = distance * dotsPerMillimetre;
  const double down = std::min(radius, canvas.getHeight() - 1 - middleY);
  const double right = std::sqrt(radius * radius - down * down);
  const std::string label = " " + metres(distance) + " ";
  const int column =
      rounded((middleX + right) / cBrailleCanvas::DOTS_ACROSS) - static_cast<int>(label.size()) / 2;
  canvas.write(column, rounded(middleY + down) / cBrailleCanvas::DOTS_DOWN, label);
}

std::vector<std::string> cPolarPicture::lines(const cPalette& palette) const {
  std::vector<std::string> text;
  text.reserve(static_cast<std::size_t>(rows));
  for (int row = 0; row < rows; ++row) text.push_back(canvas.line(row, palette));
  return text;
}

}  // namespace tool
