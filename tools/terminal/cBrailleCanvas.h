#pragma once

#include <string>
#include <vector>

#include "tools/terminal/cPalette.h"

namespace tool {

/// A drawing in character cells of 2 x 4 braille dots (U+2800 to U+28FF). It knows no terminal.
///
/// Readings go before the grid: a cell that holds a reading shows readings only. What lies
/// outside is not drawn.
class cBrailleCanvas {
 public:
  static constexpr int DOTS_ACROSS = 2;  ///< in a cell
  static constexpr int DOTS_DOWN = 4;

  cBrailleCanvas(int columnCount, int rowCount);

  int getWidth() const { return columns * DOTS_ACROSS; }
  int getHeight() const { return rows * DOTS_DOWN; }
  bool holds(int x, int y) const;

  /// One dot of rings and rays; x runs to the right, y down.
  void gridDot(int x, int y);

  /// One reading's dot; `part` is its distance for the palette. The nearest colours the cell.
  void readingDot(int x, int y, double part);

  /// Writes over the grid: `glyphs` are characters of one cell each, the first in `column`. Left
  /// out whole where a cell holds a reading or lies outside.
  void write(int column, int row, const std::vector<std::string>& glyphs);
  void write(int column, int row, const std::string& ascii);

  /// Row `row` as UTF-8 with the palette's codes, without blanks at its end.
  std::string line(int row, const cPalette& palette) const;

 private:
  struct cCell {
    unsigned grid = 0;      // braille dots
    unsigned readings = 0;  // braille dots
    double nearest = 0;     // of the readings
    std::string glyph;
  };

  bool isFree(int column, int row) const;
  cCell& cellAt(int column, int row);
  const cCell& cellAt(int column, int row) const;

  const int columns;
  const int rows;
  std::vector<cCell> cells;  // row by row
};

}  // namespace tool
