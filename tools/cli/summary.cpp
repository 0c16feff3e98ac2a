#include "tools/cli/summary.h"

#include <fmt/format.h>

#include "tools/base/messages.h"
#include "tools/base/plural.h"

namespace tool {

std::string describeHealth(const tarvo::cHealth& health) {
  const std::string expected =
      health.expectedRate > 0 ? fmt::format(" of {:.1f}", health.expectedRate) : "";
  return fmt::format("{:.1f}{} scans a second, {} damaged, {} lost, clock jitter {:.1f} ms",
                     health.rate, expected, health.damaged, health.lost, health.clockJitter * 1000);
}

std::string getSummary(const cRateMeter& meter, const tarvo::cHealth& health) {
  const std::size_t scans = meter.getTotal();
  const std::string rate = scans > 1 ? fmt::format("{:.2f} a second, ", meter.getMeanRate()) : "";
  return fmt::format("{}, {} damaged, {} lost, {}{} dropped, {}", plural(scans, "scan"),
                     health.damaged, health.lost, rate, health.dropped,
                     plural(health.reconnects, "reconnect"));
}

void printSummary(const cRateMeter& meter, const tarvo::cHealth& health) {
  printNote(getSummary(meter, health));
  printDetail("health: " + describeHealth(health));
}

}  // namespace tool
