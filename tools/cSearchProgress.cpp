#include "tools/cSearchProgress.h"

#include <fmt/format.h>

#include "tools/plural.h"

namespace tool {

namespace {

constexpr std::chrono::milliseconds TICK{200};

const char* dialectOf(const cTraffic& traffic) {
  if (traffic.lastCommand.empty()) return "listening";
  return traffic.isOld() ? "SCIP 1.x" : "SCIP 2.0";
}

}  // namespace

cSearchProgress::cSearchProgress(const cWatchedPort& watched, double maxSeconds, cShutdown& stop)
    : port(watched),
      maxSeconds(maxSeconds),
      exitHook(stop, [this] { end(); }),
      thread(&cSearchProgress::displayLoop, this) {}

cSearchProgress::~cSearchProgress() {
  end();
  thread.join();
}

void cSearchProgress::end() {
  const std::lock_guard<std::mutex> lock(mutex);
  isOver = true;
  line.clear();
  changed.notify_all();
}

void cSearchProgress::displayLoop() {
  std::unique_lock<std::mutex> lock(mutex);
  while (!isOver) {
    line.show(getText());
    changed.wait_for(lock, TICK);
  }
}

std::string cSearchProgress::getText() const {
  const std::chrono::duration<double> passed = cClock::now() - start;
  const cTraffic traffic = port.getTraffic();
  return fmt::format("{} bits/s, {}: {} heard, {:.0f} s of {:.0f} at most", traffic.speed,
                     dialectOf(traffic), plural(traffic.heard, "byte"), passed.count(), maxSeconds);
}

}  // namespace tool
