#include "tools/cSearch.h"

#include <fmt/format.h>

#include <algorithm>

#include "tools/cFailure.h"
#include "tools/cSearchProgress.h"

namespace tool {

namespace {

constexpr int READ_TIMEOUT = 300;  // milliseconds: the library's own for a search
constexpr int PASSES = 3;

// What one detection takes where nothing answers: 300 ms until the line is quiet, 2 s each for the
// identity and for "TM2", 300 ms until the library's thread has given up, 300 ms for "V".
constexpr double DETECTION_S = 4.9;

}  // namespace

const std::vector<int>& cSearch::usualSpeeds() {
  static const std::vector<int> speeds = {115200, 500000, 19200, 57600};
  return speeds;
}

cSearch::cSearch(const std::string& device, const cPort& tty, boost::shared_ptr<cTarvoLink> over,
                 const std::vector<int>& speeds)
    : name(device), port(tty), link(over) {
  const int present = link->portbuf->getSetting()->baudRate;
  // With one speed alone, three detections of it; else the first is the present speed's.
  if (speeds.size() > 1 || speeds.front() != present) detections.push_back(present);
  for (int pass = 0; pass < PASSES; ++pass) {
    detections.insert(detections.end(), speeds.begin(), speeds.end());
  }
}

boost::shared_ptr<cSensorDriver> cSearch::run(cStop& stop) {
  const double most = static_cast<double>(detections.size()) * DETECTION_S;
  cSearchProgress progress(most, stop);
  link->portbuf->readTimeout = READ_TIMEOUT;
  for (std::size_t i = 0; i < detections.size(); ++i) {
    const int speed = detections[i];
    if (i > 0) setSpeed(speed);
    progress.begin(speed);
    if (isNew(speed)) progress.setHeard(listen(speed));
    if (auto driver = cSensorDriverManager::tryCreate(link)) return driver;
    if (port.isGone()) {
      throw cPassingFailure(eExit::BAD_INPUT,
                            fmt::format("{} has gone while a sensor was looked for on it. Look at "
                                        "its plug and its power.",
                                        name));
    }
  }
  fail();
}

bool cSearch::isNew(int speed) const {
  return std::none_of(heard.begin(), heard.end(),
                      [speed](const auto& known) { return known.first == speed; });
}

void cSearch::setSpeed(int speed) {
  const auto& setting = link->portbuf->getSetting();
  setting->baudRate = speed;
  link->portbuf->termSetup(setting);
}

std::size_t cSearch::listen(int speed) {
  const std::string bytes = port.ask(cHeard::QUESTION);
  heard.emplace_back(speed, bytes);
  return bytes.size();
}

void cSearch::fail() const {
  std::string text = fmt::format("no sensor answers on {}. Heard there when asked:", name);
  eHeard best = eHeard::NOTHING;
  for (const auto& [speed, what] : heard) {
    text += fmt::format("\n  at {} bits/s: {}", speed, what.getText());
    best = std::max(best, what.getKind());
  }
  throw cPassingFailure(
      eExit::NO_SENSOR,
      fmt::format("{}\nEach speed was tried {} times, in SCIP 2.0 and SCIP 1.x.\n{}", text, PASSES,
                  causeOf(best)));
}

}  // namespace tool
