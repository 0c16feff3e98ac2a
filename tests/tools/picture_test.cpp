// The pictures without a terminal: the parts that draw them, from readings to text.
#include <algorithm>
#include <cmath>

#include "tests/tools/cProgram.h"
#include "tools/output/readings.h"
#include "tools/terminal/viewFrame.h"

namespace {

using tPoints = std::vector<tool::cReading>;
using tLines = std::vector<std::string>;

constexpr int COLUMNS = 41;  // of a picture with two lines of text below it
constexpr int ROWS = 21;

/// A scan of a point each hundredth of a radian, of which only `points` are distances.
tarvo::cLaserScan scanOf(const tPoints& points) {
  tarvo::cLaserScan scan;
  scan.angleMin = -2.4;
  scan.angleMax = 2.4;
  scan.angleIncrement = 0.01;
  scan.distances.resize(481);
  scan.ranges.assign(481, std::numeric_limits<float>::quiet_NaN());
  for (const tool::cReading& point : points) {
    const auto place = static_cast<std::size_t>(std::lround((point.angle + 2.4) / 0.01));
    scan.distances.at(place) = static_cast<int>(point.distance);
    scan.ranges.at(place) = static_cast<float>(point.distance / 1000);
  }
  return scan;
}

/// What the terminal shows: a picture that reaches 2 m.
tLines frameOf(const tPoints& points, const tool::cTerminalSize& size = {COLUMNS, ROWS + 2}) {
  auto sensor = std::make_shared<tarvo::cSensorInfo>();
  sensor->product = "a name longer than most windows";
  tool::cViewStatus status{{}, 10, 0.1};
  status.health.state = tarvo::eState::SCANNING;
  status.health.sensor = sensor;
  const tarvo::cLaserScan scan = scanOf(points);
  return tool::viewFrame(size, tool::cPalette(tool::eColours::NONE),
                         tool::cPolarScale::covering(2000), &scan, status, "keys");
}

tLines glyphsOf(const std::string& line) {
  tLines glyphs;
  for (const char c : line) {
    if ((static_cast<unsigned char>(c) & 0xC0) != 0x80) glyphs.emplace_back();
    glyphs.back() += c;
  }
  return glyphs;
}

/// The cell so many columns right of the sensor and rows above it.
std::string cellOf(const tPoints& points, int right, int up) {
  tLines glyphs = glyphsOf(frameOf(points).at(static_cast<std::size_t>(ROWS / 2 - up)));
  glyphs.resize(COLUMNS, " ");
  return glyphs.at(static_cast<std::size_t>(COLUMNS / 2 + right));
}

}  // namespace

// Would catch a picture mirrored, turned, or stretched (a cell is twice as high as wide), and
// readings beyond its edge drawn as if they were on it.
TEST(Picture, hasItsReadingsInTheirPlaces) {
  for (const auto& [distance, angle, right, up] :
       {std::tuple(800, 0.0, 0, 4), {800, M_PI / 2, -8, 0}, {1600, -M_PI / 2, 16, 0}}) {
    EXPECT_NE(cellOf({{1.0 * distance, angle}}, right, up), cellOf({}, right, up)) << angle;
  }
  const tLines empty = frameOf({}), distant = frameOf({{2500, 0}, {60000, 1}, {1e9, 1.5}});
  EXPECT_TRUE(std::equal(empty.begin(), empty.begin() + ROWS, distant.begin()));
  EXPECT_TRUE(holds(frameOf({{2500, 0}, {60000, 1}, {1900, 2}}).back(), "2 points farther off"));
}

// Would catch a line that wraps and pushes the picture out of place, or an error in a tiny window.
TEST(Picture, fitsEverySizeOfWindow) {
  for (const tool::cTerminalSize size : {tool::cTerminalSize{1, 1}, {2, 4}, {80, 24}, {500, 200}}) {
    const tLines lines = frameOf({{900, 0}, {900, 2}}, size);
    ASSERT_EQ(lines.size(), static_cast<std::size_t>(size.rows));
    for (const auto& line : lines) {
      EXPECT_LE(glyphsOf(line).size(), static_cast<std::size_t>(size.columns)) << line;
    }
  }
}
