#include "bench/cSimHost.h"

#include <unistd.h>

#include <memory>
#include <stdexcept>

namespace {

using cSensors = std::vector<std::unique_ptr<cSimSensor>>;

cSimHost::cTotals addUp(const cSensors& sensors) {
  cSimHost::cTotals totals;
  for (const auto& sensor : sensors) {
    const cSimCounters counters = sensor->getCounters();
    totals.scans += counters.scans;
    totals.skippedScans += counters.skippedScans;
    totals.bytes += counters.bytesReceived + counters.bytesWritten;
  }
  return totals;
}

/// The child: writes the paths, a line each, and an empty line; then the totals for each byte that
/// it receives.
void host(int pipe, cSimSetting setting, int count) {
  cSensors sensors;
  std::string paths;
  for (int started = 0; started < count; ++started, ++setting.seed) {
    sensors.push_back(std::make_unique<cSimSensor>(setting));
    paths += sensors.back()->getPath() + "\n";
  }
  paths += "\n";
  if (write(pipe, paths.data(), paths.size()) != static_cast<ssize_t>(paths.size())) return;
  for (char request = 0; read(pipe, &request, 1) == 1;) {
    const cSimHost::cTotals totals = addUp(sensors);
    if (write(pipe, &totals, sizeof totals) != sizeof totals) return;
  }
}

}  // namespace

cSimHost::cSimHost(const cSimSetting& setting, int count)
    : child([&setting, count](int pipe) { host(pipe, setting, count); }) {
  std::string line;
  for (char c = 0; read(child.getPipe(), &c, 1) == 1;) {
    if (c != '\n') {
      line += c;
    } else if (line.empty()) {
      return;
    } else {
      paths.push_back(line);
      line.clear();
    }
  }
  throw std::runtime_error("the simulated sensors did not start");
}

cSimHost::cTotals cSimHost::getTotals() {
  cTotals totals;
  if (write(child.getPipe(), "?", 1) != 1 ||
      read(child.getPipe(), &totals, sizeof totals) != sizeof totals) {
    throw std::runtime_error("the simulated sensors have ended");
  }
  return totals;
}
