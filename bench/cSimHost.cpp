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
    totals.bytes += counters.bytesHeard + counters.bytesWritten;
  }
  return totals;
}

/// The child: tells the paths, a line each and an empty one, then the totals at each byte it gets.
void host(int pipe, cSimSetting setting, int count) {
  cSensors sensors;
  std::string told;
  for (int made = 0; made < count; ++made, ++setting.seed) {
    sensors.push_back(std::make_unique<cSimSensor>(setting));
    told += sensors.back()->getPath() + "\n";
  }
  told += "\n";
  if (write(pipe, told.data(), told.size()) != static_cast<ssize_t>(told.size())) return;
  for (char asked = 0; read(pipe, &asked, 1) == 1;) {
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
  throw std::runtime_error("the simulated sensors cannot be made");
}

cSimHost::cTotals cSimHost::getTotals() {
  cTotals totals;
  if (write(child.getPipe(), "?", 1) != 1 ||
      read(child.getPipe(), &totals, sizeof totals) != sizeof totals) {
    throw std::runtime_error("the simulated sensors are gone");
  }
  return totals;
}
