#include "tools/cSearch.h"

#include <fmt/format.h>

#include <algorithm>

#include "tools/cFailure.h"
#include "tools/cHeard.h"
#include "tools/cSearchProgress.h"

namespace tool {

namespace {

// What one detection takes at most where nothing answers: 300 ms until the line is quiet, 2.1 s
// each for the identity and for "TM2", and then, on a line that stays silent, 300 ms until the
// library's thread has given up and 300 ms for "V", or 800 ms for "V" where something never stops
// talking.
constexpr double DETECTION_S = 5.3;

}  // namespace

cSearch::cSearch(const std::string& device, const cPort& tty, cWatchedPort& over,
                 boost::shared_ptr<cTarvoLink> through, const std::vector<int>& speeds)
    : name(device), port(tty), watched(over), link(through) {
  const int present = watched.getSetting()->baudRate;
  // With one speed alone, three detections of it; else the first is the present speed's.
  if (speeds.size() > 1 || speeds.front() != present) detections.push_back(present);
  for (int pass = 0; pass < cSensorDriverManager::SEARCH_PASSES; ++pass) {
    detections.insert(detections.end(), speeds.begin(), speeds.end());
  }
}

boost::shared_ptr<cSensorDriver> cSearch::run(cShutdown& stop) {
  watched.readTimeout = cSensorDriverManager::SEARCH_TIMEOUT;
  watched.watch(detections.front());
  cSearchProgress progress(watched, static_cast<double>(detections.size()) * DETECTION_S, stop);
  for (std::size_t i = 0; i < detections.size(); ++i) {
    if (i > 0) setSpeed(detections[i]);
    watched.watch(detections[i]);
    if (auto driver = cSensorDriverManager::tryCreate(link)) {
      watched.ignore();
      return driver;
    }
    if (port.isGone()) {
      throw cTransientError(eExit::BAD_INPUT,
                            fmt::format("{} has gone while a sensor was looked for on it. Look at "
                                        "its plug and its power.",
                                        name));
    }
  }
  fail();
}

void cSearch::setSpeed(int speed) const {
  const auto& setting = watched.getSetting();
  setting->baudRate = speed;
  watched.termSetup(setting);
}

void cSearch::fail() const {
  std::string text = fmt::format("no sensor answers on {}. Heard there when asked:", name);
  eHeard best = eHeard::NOTHING;
  for (const cTraffic& traffic : watched.getAllTraffic()) {
    const cHeard heard(traffic);
    text += fmt::format("\n  at {} bits/s: {}", traffic.speed, heard.getText());
    best = std::max(best, heard.getKind());
  }
  throw cTransientError(
      eExit::NO_SENSOR,
      fmt::format("{}\nEach speed was tried {} times, in SCIP 2.0 and SCIP 1.x.\n{}", text,
                  cSensorDriverManager::SEARCH_PASSES, causeOf(best)));
}

}  // namespace tool
