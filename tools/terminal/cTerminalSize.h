#pragma once

namespace tool {

/// Character cells across and down. A plain value.
struct cTerminalSize {
  int columns;
  int rows;

  /// The size of the terminal that descriptor `fd` is; where that is not known, or `fd` is none,
  /// COLUMNS and LINES of the environment, or else 80 x 24. Source: ioctl TIOCGWINSZ.
  static cTerminalSize of(int fd);

  bool operator!=(const cTerminalSize& other) const {
    return columns != other.columns || rows != other.rows;
  }
};

}  // namespace tool
