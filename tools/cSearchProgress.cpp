#include "tools/cSearchProgress.h"

#include <fmt/format.h>

namespace tool {

namespace {

constexpr std::chrono::milliseconds TICK{200};

const char* dialectOf(const cTraffic& traffic) {
  if (traffic.lastCommand.empty()) return "listening";
  return traffic.isOld() ? "SCIP 1.x" : "SCIP 2.0";
}

}  // namespace

cSearchProgress::cSearchProgress(const cWatchedPort& watched, double most, cStop& stop)
    : port(watched),
      mostSeconds(most),
      farewell(stop, [this] { end(); }),
      shower(&cSearchProgress::keepShowing, this) {}

cSearchProgress::~cSearchProgress() {
  end();
  shower.join();
}

void cSearchProgress::end() {
  const std::lock_guard<std::mutex> lock(mutex);
  isOver = true;
  line.clear();
  changed.notify_all();
}

void cSearchProgress::keepShowing() {
  std::unique_lock<std::mutex> lock(mutex);
  while (!isOver) {
    line.show(getText());
    changed.wait_for(lock, TICK);
  }
}

std::string cSearchProgress::getText() const {
  const std::chrono::duration<double> passed = cClock::now() - start;
  const cTraffic traffic = port.getTraffic();
  return fmt::format("{} bits/s, {}: {} bytes heard, {:.0f} s of {:.0f} at most", traffic.speed,
                     dialectOf(traffic), traffic.heard, passed.count(), mostSeconds);
}

}  // namespace tool
