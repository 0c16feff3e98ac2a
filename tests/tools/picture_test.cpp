#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <set>

#include "tests/tools/cProgram.h"
#include "tests/tools/cTempFolder.h"
#include "tools/cPolarPicture.h"
#include "tools/cSvgPlot.h"
#include "tools/cZoom.h"
#include "tools/viewFrame.h"

using tool::cPalette;
using tool::cPolarPicture;
using tool::cPolarScale;
using tool::eColours;

namespace {

constexpr int COLUMNS = 41;
constexpr int ROWS = 21;
constexpr int MIDDLE_COLUMN = 20;
constexpr int MIDDLE_ROW = 10;
const cPolarScale TWO_METRES = cPolarScale::reaching(2000);

cScan scanOf(const std::vector<cScanPoint>& points) {
  cScan scan(-2.4, 2.4, 0.01);
  scan.points = points;
  return scan;
}

/// A row's characters.
std::vector<std::string> glyphsOf(const std::string& line) {
  std::vector<std::string> glyphs;
  for (const char c : line) {
    if ((static_cast<unsigned char>(c) & 0xC0) != 0x80) glyphs.emplace_back();
    glyphs.back() += c;
  }
  glyphs.resize(COLUMNS, " ");
  return glyphs;
}

using cCells = std::set<std::pair<int, int>>;  // column and row, from the sensor: right and up

/// The cells in which readings show: those that differ from the same picture without them.
cCells cellsOf(const std::vector<cScanPoint>& points) {
  const auto linesOf = [](const std::vector<cScanPoint>& drawn) {
    cPolarPicture picture(COLUMNS, ROWS, TWO_METRES);
    picture.draw(scanOf(drawn));
    return picture.lines(cPalette(eColours::NONE));
  };
  const auto with = linesOf(points);
  const auto without = linesOf({});
  cCells cells;
  for (int row = 0; row < ROWS; ++row) {
    const auto place = static_cast<std::size_t>(row);
    const auto glyphs = glyphsOf(with[place]);
    const auto before = glyphsOf(without[place]);
    for (int i = 0; i < COLUMNS; ++i) {
      const auto column = static_cast<std::size_t>(i);
      if (glyphs[column] != before[column]) cells.insert({i - MIDDLE_COLUMN, MIDDLE_ROW - row});
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

TEST(PolarPictureTest, FrontIsUpAndAnglesRunAntiClockwise) {
  // Fails when the picture is mirrored, turned, or stretched: a cell is twice as high as wide.
  EXPECT_EQ(cellsOf({{800, 0}}), (cCells{{0, 4}}));
  EXPECT_EQ(cellsOf({{800, M_PI / 2}}), (cCells{{-8, 0}}));
  EXPECT_EQ(cellsOf({{800, -M_PI / 2}}), (cCells{{8, 0}}));
}

TEST(PolarPictureTest, SquareRoomHasAStraightOutlineRoundTheSensor) {
  std::vector<cScanPoint> room;
  for (int degree = -135; degree < 225; ++degree) {
    const double angle = degree * M_PI / 180;
    const double distance = 1500 / std::max(std::abs(std::cos(angle)), std::abs(std::sin(angle)));
    room.push_back({distance, angle});
  }
  for (const auto& [right, up] : cellsOf(room)) {
    const bool onWall = std::abs(std::abs(right) - 15) <= 1 || std::abs(std::abs(up) - 7.5) <= 1;
    EXPECT_TRUE(onWall) << right << " " << up;
  }
  EXPECT_GT(cellsOf(room).size(), 80u);
}

TEST(PolarPictureTest, CountsWhatLiesOutsideAndDrawsNothingOfIt) {
  EXPECT_EQ(cellsOf({{2500, 0}, {60000, 1}, {1e9, 1}}), cCells());
  cPolarPicture picture(COLUMNS, ROWS, TWO_METRES);
  picture.draw(scanOf({{2500, 0}, {60000, 1}, {1900, 0}}));
  EXPECT_EQ(picture.getFarther(), 2);
}

TEST(PolarPictureTest, LabelsItsRingsBehindTheSensorButNeverOverAReading) {
  const auto labelled = [](const std::vector<cScanPoint>& points) {
    cPolarPicture picture(COLUMNS, ROWS, TWO_METRES);
    picture.draw(scanOf(points));
    std::vector<std::string> labels;
    const auto lines = picture.lines(cPalette(eColours::NONE));
    for (std::size_t row = MIDDLE_ROW + 1; row < lines.size(); ++row) {
      for (const char* label : {" 0.5 m ", " 1 m ", " 1.5 m ", " 2 m "}) {
        if ((lines[row] + " ").find(label) != std::string::npos) labels.emplace_back(label);
      }
    }
    return labels;
  };
  const std::vector<std::string> all = {" 0.5 m ", " 1 m ", " 1.5 m ", " 2 m "};
  EXPECT_EQ(labelled({}), all);
  const std::vector<std::string> one_less = {" 0.5 m ", " 1.5 m ", " 2 m "};
  EXPECT_EQ(labelled({{1000, M_PI}}), one_less);
}

TEST(PolarPictureTest, NearestReadingColoursItsCell) {
  cPolarPicture picture(COLUMNS, ROWS, TWO_METRES);
  picture.draw(scanOf({{1990, 0.5}, {100, 0}, {110, 0}}));
  std::string text;
  for (const auto& line : picture.lines(cPalette(eColours::PALETTE_256))) text += line;
  EXPECT_EQ(countOf("\x1b[38;5;196m", text), 1u) << "red, near";
  EXPECT_EQ(countOf("\x1b[38;5;33m", text), 1u) << "blue, far";
}

TEST(PolarScaleTest, RingsAreRoundAndFew) {
  for (double millimetres = 50; millimetres < 2e5; millimetres *= 1.07) {
    const cPolarScale scale = cPolarScale::reaching(millimetres);
    EXPECT_GE(scale.getReach(), std::min(millimetres, 1e5));
    EXPECT_LE(scale.getReach(), std::max(100.0, millimetres * 1.5001));
    for (const int most : {1, 3, 5}) {
      EXPECT_LE(scale.getReach() / scale.getRingStep(most), most);
      EXPECT_LE(scale.getRingStep(most), std::max(1.0, scale.getReach() * 5 / most));
    }
  }
}

TEST(ZoomTest, FollowsTheReadingsUntilTheUserZooms) {
  const auto at = [](double distance) {
    return scanOf(std::vector<cScanPoint>(100, {distance, 0}));
  };
  tool::cZoom zoom(60000);
  zoom.follow(at(1900));
  const double fitted = zoom.getScale().getReach();
  EXPECT_EQ(fitted, 3000);
  for (const double noisy : {2950, 1700, 2990, 2000}) {  // else the rings jump at every scan
    zoom.follow(at(noisy));
    EXPECT_EQ(zoom.getScale().getReach(), fitted) << noisy;
  }
  zoom.follow(scanOf({}));
  zoom.closer();
  zoom.follow(at(9000));
  EXPECT_EQ(zoom.getScale().getReach(), 2000);
  zoom.fit();
  zoom.follow(at(9000));
  EXPECT_GE(zoom.getScale().getReach(), 9000);
  for (int i = 0; i < 100; ++i) zoom.farther();
  EXPECT_EQ(zoom.getScale().getReach(), 100000);
}

TEST(ViewFrameTest, FitsEverySizeOfWindow) {
  // Fails when a line wraps and pushes the picture out of place, or a tiny window is an error.
  const cScan scan = scanOf({{900, 0}, {900, 2}});
  const tool::cViewStatus status{"a name longer than most windows", "SCIP 2.0", 115200, 10, 0, 0.1};
  for (const tool::cTerminalSize size :
       {tool::cTerminalSize{1, 3}, {2, 4}, {9, 5}, {80, 24}, {500, 200}}) {
    const auto lines =
        tool::viewFrame(size, cPalette(eColours::NONE), TWO_METRES, &scan, status, "keys");
    ASSERT_EQ(lines.size(), static_cast<std::size_t>(size.rows));
    for (const auto& line : lines) {
      const auto isFirst = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; };
      EXPECT_LE(std::count_if(line.begin(), line.end(), isFirst), size.columns) << line;
    }
  }
  const auto lines =
      tool::viewFrame({80, 24}, cPalette(eColours::NONE), TWO_METRES, nullptr, status, "");
  EXPECT_NE(lines[22].find("waiting"), std::string::npos) << lines[22];
  EXPECT_NE(lines[22].find("115200 bits/s"), std::string::npos) << "the name is cut, no figure";
}

TEST(SvgPlotTest, IsWellFormedWhateverTheSensorCallsItself) {
  const cTempFolder folder;
  const std::string file = folder / "plot.svg";
  const tool::cSvgPlot plot(scanOf({{900, 0}, {1000, 0.01}, {900, 1}}), "<S&S \"one\" ]]>",
                            "a & b");
  std::ofstream(file) << plot.getText();
  cStart xmllint;
  xmllint.path = "/usr/bin/xmllint";
  const cResult result = runProgram({"--noout", file}, xmllint);
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_EQ(countOf("class=\"reading\"", plot.getText()), 3u);
  EXPECT_EQ(countOf("M500 580L", plot.getText()), 2u) << "free space where nothing was measured";
}
