#include "tools/terminal/cLiveView.h"

namespace tool {

namespace {

constexpr std::chrono::milliseconds KEY_MS{40};    // how soon a key works while no scan comes
constexpr std::chrono::milliseconds FRAME_MS{50};  // no eye needs more frames
constexpr int SCANS_FOR_RATE = 3;
constexpr auto HELP = "+ - zoom, 0 fit, space pause, q quit";
constexpr auto PAUSED_HELP = "PAUSED: space goes on, + - zoom, 0 fit, q quit";

}  // namespace

std::string cLiveView::drawOnce(const cOutput& output, const cShutdown& stop) {
  while (meter.getTotal() < SCANS_FOR_RATE && !stop.isRequested()) take(KEY_MS);
  if (!shown) return "";
  size = cTerminalSize::of(output.getDescriptor());
  if (output.isTerminal()) {
    palette = cPalette(terminalColours());
    --size.rows;  // the shell's next line shall not push the first one out
  }
  std::string text;
  for (const std::string& line : frame("")) text += line + "\n";
  return text;
}

void cLiveView::run(cOutput& output, cShutdown& stop) {
  palette = cPalette(terminalColours());
  cTerminal terminal(output, stop);
  while (!isOver && !stop.isRequested()) {
    showIfDue(terminal, cTerminalSize::of(output.getDescriptor()));
    if (output.isReaderGone()) stop.requestByReader();
    take(KEY_MS);
    for (const char key : terminal.readKeys()) press(key);
  }
}

void cLiveView::take(std::chrono::milliseconds patience) {
  const auto scan = source.next(patience);
  if (!scan) return;
  meter.count();
  if (isPaused) return;
  shown = scan;
  shownTaken = cClock::now();
  zoom.follow(*shown);
}

void cLiveView::press(char key) {
  nextFrame = {};
  switch (key) {
    case '+':
    case '=':  // the same key without shift
      return zoom.zoomIn();
    case '-':
      return zoom.zoomOut();
    case '0':
      zoom.fit();
      if (shown) zoom.follow(*shown);  // a paused picture too
      return;
    case ' ':
      isPaused = !isPaused;
      return;
    case 'q':
    case 'Q':
      isOver = true;
  }
}

void cLiveView::showIfDue(cTerminal& terminal, const cTerminalSize& now) {
  const bool isResized = now != size;
  if (isResized) terminal.clear();
  size = now;
  if (!isResized && cClock::now() < nextFrame) return;
  nextFrame = cClock::now() + FRAME_MS;
  terminal.show(frame(isPaused ? PAUSED_HELP : HELP));
}

std::vector<std::string> cLiveView::frame(const std::string& help) {
  cViewStatus status{source.getHealth(), 0, 0};
  status.rate = status.health.rate;  // unlike the meter's, 0 while nothing comes
  status.age = std::chrono::duration<double>(cClock::now() - shownTaken).count();
  return viewFrame(size, palette, zoom.getScale(), shown.get(), status, help);
}

}  // namespace tool
