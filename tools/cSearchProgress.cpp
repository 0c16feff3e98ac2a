#include "tools/cSearchProgress.h"

#include <fmt/format.h>

namespace tool {

namespace {

constexpr std::chrono::milliseconds TICK{200};

}  // namespace

cSearchProgress::cSearchProgress(double most, cStop& stop)
    : mostSeconds(most),
      farewell(stop, [this] { line.clear(); }),
      shower(&cSearchProgress::keepShowing, this) {}

cSearchProgress::~cSearchProgress() {
  {
    const std::lock_guard<std::mutex> lock(mutex);
    isOver = true;
    changed.notify_all();
  }
  shower.join();
}

void cSearchProgress::begin(int speed) {
  const std::lock_guard<std::mutex> lock(mutex);
  if (speed != lineSpeed) heard = 0;
  lineSpeed = speed;
  changed.notify_all();
}

void cSearchProgress::setHeard(std::size_t bytes) {
  const std::lock_guard<std::mutex> lock(mutex);
  heard = bytes;
  changed.notify_all();
}

void cSearchProgress::keepShowing() {
  std::unique_lock<std::mutex> lock(mutex);
  while (!isOver) {
    if (lineSpeed != 0) line.show(getText());
    changed.wait_for(lock, TICK);
  }
}

std::string cSearchProgress::getText() const {
  const std::chrono::duration<double> passed = cClock::now() - start;
  return fmt::format("{} bits/s, SCIP 2.0 then 1.x: {} bytes heard, {:.0f} s of {:.0f} at most",
                     lineSpeed, heard, passed.count(), mostSeconds);
}

}  // namespace tool
