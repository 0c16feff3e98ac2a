// The pictures without a terminal: the parts that draw them, from readings to text.
#include <algorithm>
#include <cmath>
#include <set>

#include "tests/tools/cProgram.h"
#include "tests/tools/cTempFolder.h"
#include "tools/cSvgPlot.h"
#include "tools/cZoom.h"
#include "tools/viewFrame.h"

using tool::cPolarScale;
using tool::cTerminalSize;
using tool::eColours;

namespace {

using tPoints = std::vector<cScanPoint>;
using tLines = std::vector<std::string>;

constexpr int COLUMNS = 41;  // of a picture with two lines of text below it
constexpr int ROWS = 21;

cScan scanOf(const tPoints& points) {
  cScan scan(-2.4, 2.4, 0.01);
  scan.points = points;
  return scan;
}

/// What the terminal shows: a picture that reaches 2 m.
tLines frameOf(const tPoints& points, const cTerminalSize& size = {COLUMNS, ROWS + 2},
               eColours colours = eColours::NONE) {
  const tool::cViewStatus status{"a name longer than most windows", "SCIP 2.0", 115200, 10, 0, 0.1};
  const cScan scan = scanOf(points);
  return tool::viewFrame(size, tool::cPalette(colours), cPolarScale::reaching(2000), &scan, status,
                         "keys");
}

tLines glyphsOf(const std::string& line) {
  tLines glyphs;
  for (const char c : line) {
    if ((static_cast<unsigned char>(c) & 0xC0) != 0x80) glyphs.emplace_back();
    glyphs.back() += c;
  }
  return glyphs;
}

using tCells = std::set<std::pair<int, int>>;  // from the sensor: columns right, rows up

/// The cells in which readings show: those that differ from the same picture without them.
tCells cellsOf(const tPoints& points) {
  const tLines with = frameOf(points);
  const tLines without = frameOf({});
  tCells cells;
  for (int row = 0; row < ROWS; ++row) {
    tLines glyphs = glyphsOf(with[static_cast<std::size_t>(row)]);
    tLines before = glyphsOf(without[static_cast<std::size_t>(row)]);
    glyphs.resize(COLUMNS, " ");
    before.resize(COLUMNS, " ");
    for (std::size_t i = 0; i < COLUMNS; ++i) {
      if (glyphs[i] != before[i]) cells.insert({static_cast<int>(i) - COLUMNS / 2, ROWS / 2 - row});
    }
  }
  return cells;
}

std::size_t countOf(const std::string& part, const std::string& text) {
  std::size_t count = 0;
  for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

}  // namespace

// Would catch a picture mirrored, turned, or stretched: a cell is twice as high as wide.
TEST(Picture, hasItsFrontUpAndItsAnglesAntiClockwise) {
  EXPECT_EQ(cellsOf({{800, 0}}), (tCells{{0, 4}}));
  EXPECT_EQ(cellsOf({{800, M_PI / 2}}), (tCells{{-8, 0}}));
  EXPECT_EQ(cellsOf({{1600, -M_PI / 2}}), (tCells{{16, 0}}));
}

TEST(Picture, countsWhatLiesOutsideAndDrawsNothingOfIt) {
  EXPECT_EQ(cellsOf({{2500, 0}, {60000, 1}, {1e9, 1}}), tCells());
  EXPECT_TRUE(holds(frameOf({{2500, 0}, {60000, 1}, {1900, 0}}).back(), "2 points farther off"));
}

TEST(Picture, labelsItsRingsBehindTheSensorButNeverOverAReading) {
  const auto labelled = [](const tPoints& points) {
    std::string below;
    const tLines lines = frameOf(points);
    for (std::size_t row = ROWS / 2 + 1; row < ROWS; ++row) below += lines[row] + " \n";
    tLines labels;
    for (const char* label : {" 0.5 m ", " 1 m ", " 1.5 m ", " 2 m "}) {
      if (countOf(label, below) == 1) labels.emplace_back(label);
    }
    return labels;
  };
  EXPECT_EQ(labelled({}), (tLines{" 0.5 m ", " 1 m ", " 1.5 m ", " 2 m "}));
  EXPECT_EQ(labelled({{1000, M_PI}}), (tLines{" 0.5 m ", " 1.5 m ", " 2 m "}));
}

TEST(Picture, colourOfACellIsItsNearestReadings) {
  std::string text;
  const tPoints points = {{1990, 0.5}, {100, 0}, {110, 0}};
  for (const auto& line : frameOf(points, {80, 24}, eColours::PALETTE_256)) text += line;
  EXPECT_EQ(countOf("\x1b[38;5;196m", text), 1u) << "red, near";
  EXPECT_EQ(countOf("\x1b[38;5;33m", text), 1u) << "blue, far";
}

// Would catch a line that wraps and pushes the picture out of place, or an error in a tiny window.
TEST(Picture, fitsEverySizeOfWindow) {
  for (const cTerminalSize size : {cTerminalSize{1, 3}, {2, 4}, {9, 5}, {80, 24}, {500, 200}}) {
    const tLines lines = frameOf({{900, 0}, {900, 2}}, size);
    ASSERT_EQ(lines.size(), static_cast<std::size_t>(size.rows));
    for (const auto& line : lines) {
      EXPECT_LE(glyphsOf(line).size(), static_cast<std::size_t>(size.columns)) << line;
    }
  }
  EXPECT_TRUE(holds(frameOf({}, {80, 24})[22], "115200 bits/s")) << "the name is cut, no figure";
}

// Would catch rings that jump at every scan for its noise.
TEST(PictureZoom, followsTheReadingsUntilTheUserZooms) {
  tool::cZoom zoom(60000);
  const auto reachAfter = [&zoom](double distance) {
    zoom.follow(scanOf(tPoints(100, {distance, 0})));
    return zoom.getScale().getReach();
  };
  for (const double noisy : {1900, 2950, 1700, 2990, 2000}) EXPECT_EQ(reachAfter(noisy), 3000);
  zoom.follow(scanOf({}));
  zoom.closer();
  EXPECT_EQ(reachAfter(9000), 2000);
  zoom.fit();
  EXPECT_GE(reachAfter(9000), 9000);
  for (int i = 0; i < 100; ++i) zoom.farther();
  EXPECT_EQ(zoom.getScale().getReach(), 100000);
}

TEST(PicturePlot, isWellFormedWhateverTheSensorCallsItself) {
  const cTempFolder folder;
  const std::string file = folder / "plot.svg";
  const cScan scan = scanOf({{900, 0}, {1000, 0.01}, {900, 1}});
  const std::string text = tool::cSvgPlot(scan, "<S&S \"one\" ]]>", "a & b").getText();
  std::ofstream(file) << text;
  const cResult result = runProgram({"--noout", file}, {{}, eSetting::PIPES, "/usr/bin/xmllint"});
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_EQ(countOf("class=\"reading\"", text), 3u);
  EXPECT_EQ(countOf("M500 580L", text), 2u) << "free space where nothing was measured";
}
