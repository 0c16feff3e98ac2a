#include "tools/terminal/cBrailleCanvas.h"

#include <algorithm>

namespace tool {

namespace {

/// The bit of a dot in U+2800 + bits: numbered down the columns, the lowest row added later.
unsigned brailleBit(int x, int y) {
  constexpr unsigned BITS[4][2] = {{0x01, 0x08}, {0x02, 0x10}, {0x04, 0x20}, {0x40, 0x80}};
  return BITS[y % cBrailleCanvas::DOTS_DOWN][x % cBrailleCanvas::DOTS_ACROSS];
}

std::string brailleGlyph(unsigned dots) {
  const auto byte = [](unsigned value) { return static_cast<char>(value); };
  return {byte(0xE2), byte(0xA0 | dots >> 6), byte(0x80 | (dots & 0x3F))};
}

}  // namespace

cBrailleCanvas::cBrailleCanvas(int columnCount, int rowCount)
    : columns(std::max(columnCount, 0)),
      rows(std::max(rowCount, 0)),
      cells(static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows)) {}

bool cBrailleCanvas::holds(int x, int y) const {
  return x >= 0 && x < getWidth() && y >= 0 && y < getHeight();
}

void cBrailleCanvas::gridDot(int x, int y) {
  if (holds(x, y)) cellAt(x / DOTS_ACROSS, y / DOTS_DOWN).grid |= brailleBit(x, y);
}

void cBrailleCanvas::readingDot(int x, int y, double part) {
  if (!holds(x, y)) return;
  cCell& cell = cellAt(x / DOTS_ACROSS, y / DOTS_DOWN);
  cell.nearest = cell.readings == 0 ? part : std::min(cell.nearest, part);
  cell.readings |= brailleBit(x, y);
}

void cBrailleCanvas::write(int column, int row, const std::vector<std::string>& glyphs) {
  const int end = column + static_cast<int>(glyphs.size());
  for (int i = column; i < end; ++i) {
    if (!isFree(i, row)) return;
  }
  for (const std::string& glyph : glyphs) cellAt(column++, row).glyph = glyph;
}

void cBrailleCanvas::write(int column, int row, const std::string& ascii) {
  std::vector<std::string> glyphs;
  for (const char c : ascii) glyphs.emplace_back(1, c);
  write(column, row, glyphs);
}

bool cBrailleCanvas::isFree(int column, int row) const {
  return holds(column * DOTS_ACROSS, row * DOTS_DOWN) && cellAt(column, row).readings == 0;
}

std::string cBrailleCanvas::line(int row, const cPalette& palette) const {
  std::string text;
  std::string current;
  std::size_t end = 0;  // behind the last glyph that shows
  for (int column = 0; column < columns; ++column) {
    const cCell& cell = cellAt(column, row);
    const unsigned dots = cell.readings != 0 ? cell.readings : cell.grid;
    if (cell.glyph.empty() && dots == 0) {
      text += ' ';
      continue;
    }
    const std::string code = cell.readings != 0 ? palette.distance(cell.nearest) : palette.faint();
    if (code != current) text += current = code;
    text += cell.glyph.empty() ? brailleGlyph(dots) : cell.glyph;
    end = text.size();
  }
  text.resize(end);
  return end == 0 ? text : text + palette.plain();
}

cBrailleCanvas::cCell& cBrailleCanvas::cellAt(int column, int row) {
  return cells[static_cast<std::size_t>(row) * static_cast<std::size_t>(columns) +
               static_cast<std::size_t>(column)];
}

const cBrailleCanvas::cCell& cBrailleCanvas::cellAt(int column, int row) const {
  return cells[static_cast<std::size_t>(row) * static_cast<std::size_t>(columns) +
               static_cast<std::size_t>(column)];
}

}  // namespace tool
