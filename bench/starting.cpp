#include <fmt/core.h>

#include <stdexcept>

#include "bench/cDriverReader.h"
#include "bench/cSimHost.h"
#include "bench/measure.h"
#include "bench/suites.h"

namespace {

constexpr double TURN = 0.1;        // seconds that the short range sensor's scan takes
constexpr double BITS_A_BYTE = 10;  // on a serial line: start, eight, stop

// What a detection waits for by its own rules, in seconds.
constexpr double GREETING = 0.3;  // for what the sensor still had to say
constexpr double UNANSWERED_DETECTION = GREETING + 2 + 2 + 0.3;  // and for VV, TM2 and V

struct cStart {
  double seconds = 0;
  std::uint64_t bytes = 0;  ///< both ways
};

cStart timeFirstScan(int speed) {
  cSimSetting setting;
  setting.speed = speed;
  cSimHost host(setting, 1);
  const double begin = now();
  const boost::shared_ptr<cSensorDriver> driver = createDriver(host.getPaths().front());
  iSCIP2IF& scanner = *driver->getSCIP2IF();
  if (scanner.startScan(driver->getMinSpot(), driver->getMaxSpot(), 1, 0, 1, driver->getMaxDist()) <
      0) {
    throw std::runtime_error("the scan does not start");
  }
  takeScan(scanner);
  return {now() - begin, host.getTotals().bytes};
}

/// A start beside what it must wait for: the detections' own waits, the bytes on the line, a turn.
void addStart(cReport& report, int speed, double seconds, double waits, std::uint64_t bytes) {
  const double expected = waits + static_cast<double>(bytes) * BITS_A_BYTE / speed + TURN;
  report.addRow(fmt::format("first_scan_s/{}", speed), seconds, eGoal::AT_MOST, 1.1 * expected);
  report.note(fmt::format("first_scan_waits_s_{}", speed),
              {{"prescribed", waits}, {"with_line_and_turn", expected}});
}

}  // namespace

void measureStarting(const cPlan& plan, cReport& report) {
  std::vector<double> quick;
  cStart start;
  for (int round = 0; round < plan.rounds; ++round) {
    start = timeFirstScan(115200);
    quick.push_back(start.seconds);
  }
  addStart(report, 115200, median(quick), GREETING, start.bytes);
  // Unanswered: at the first speed and at the three that are tried before the right one. The bytes
  // are those of the other start: here garbage is counted too.
  const cStart slow = timeFirstScan(57600);
  addStart(report, 57600, slow.seconds, 4 * UNANSWERED_DETECTION + GREETING, start.bytes);
}
