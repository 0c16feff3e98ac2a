#pragma once

#include <chrono>
#include <optional>

#include "tools/cOutput.h"
#include "tools/cPalette.h"
#include "tools/cRateMeter.h"
#include "tools/cScanRun.h"
#include "tools/cTerminal.h"
#include "tools/cTerminalSize.h"
#include "tools/cZoom.h"
#include "tools/viewFrame.h"

namespace tool {

/// What `view` shows of a running scan, as one picture or live with keys. Belongs to one thread.
class cLiveView {
 public:
  /// All must outlive it.
  cLiveView(const cSensor& sensor, const cScanRange& range, cScanRun& run, cRateMeter& rates);

  /// One picture for `output`, as soon as the rate is known; "" where `stop` comes before the first
  /// scan. Throws as `cScanRun::nextWithin`.
  std::string drawOnce(const cOutput& output, const cShutdown& stop);

  /// Goes on until a key or `stop` ends it. Throws as `cScanRun::next`; the terminal is given back
  /// first.
  void run(cOutput& output, cShutdown& stop);

 private:
  using cClock = std::chrono::steady_clock;

  void take(std::chrono::milliseconds patience);
  void press(char key);
  void showIfDue(cTerminal& terminal, const cTerminalSize& now);
  std::vector<std::string> frame(const std::string& help);

  const cScanRange& range;
  cScanRun& scans;
  cRateMeter& meter;
  cViewStatus status;
  cZoom zoom;
  cTerminalSize size{};
  cPalette palette{eColours::NONE};
  std::optional<cScan> shown;  // its distances only
  cClock::time_point shownTaken;
  cClock::time_point nextFrame;
  bool isPaused = false;
  bool isOver = false;
};

}  // namespace tool
