#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "tarvoscan/tarvoscan.h"
#include "tools/base/cShutdown.h"
#include "tools/output/cOutput.h"
#include "tools/terminal/cPalette.h"
#include "tools/terminal/cRateMeter.h"
#include "tools/terminal/cTerminal.h"
#include "tools/terminal/cTerminalSize.h"
#include "tools/terminal/cZoom.h"
#include "tools/terminal/viewFrame.h"

namespace tool {

/// What a live view shows, from whatever source.
class iViewSource {
 public:
  virtual ~iViewSource() = default;

  /// The next scan, waiting `timeOut` at most; empty: none came.
  virtual tarvo::tScanPtr next(std::chrono::milliseconds timeOut) = 0;
  virtual tarvo::cHealth getHealth() const = 0;
};

/// What `view` shows of a running scan, as one picture or live with keys. Belongs to one thread.
class cLiveView {
 public:
  /// `source` must outlive it.
  explicit cLiveView(iViewSource& source) : source(source) {}

  /// One picture for `output`, as soon as the rate is known; "" where `stop` comes before the first
  /// scan. Throws what `source` throws.
  std::string drawOnce(const cOutput& output, const cShutdown& stop);

  /// Goes on until a key or `stop` ends it. Throws what `source` throws; the terminal is restored
  /// first.
  void run(cOutput& output, cShutdown& stop);

  /// Scans that came.
  const cRateMeter& getMeter() const { return meter; }

 private:
  using cClock = std::chrono::steady_clock;

  void take(std::chrono::milliseconds patience);
  void press(char key);
  void showIfDue(cTerminal& terminal, const cTerminalSize& now);
  std::vector<std::string> frame(const std::string& help);

  iViewSource& source;
  cRateMeter meter;
  cZoom zoom{FIRST_REACH};
  cTerminalSize size{};
  cPalette palette{eColours::NONE};
  tarvo::tScanPtr shown;  // empty: none came yet
  cClock::time_point shownTaken;
  cClock::time_point nextFrame;
  bool isPaused = false;
  bool isOver = false;

  static constexpr double FIRST_REACH = 4000;  // millimetres, until the first scan comes
};

}  // namespace tool
