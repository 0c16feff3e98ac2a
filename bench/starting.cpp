#include <fmt/core.h>

#include <stdexcept>

#include "bench/cDriverReader.h"
#include "bench/cSimHost.h"
#include "bench/measure.h"
#include "bench/suites.h"

namespace {

constexpr double TURN = 0.1;        // seconds a scan of the short range sensor takes
constexpr double BITS_A_BYTE = 10;  // on a serial line: start, eight, stop

// The waits that a detection prescribes, in seconds.
constexpr double INITIAL_READ = 0.3;  // for what the sensor was still sending
constexpr double UNANSWERED_DETECTION = INITIAL_READ + 2 + 2 + 0.3;  // and for VV, TM2 and V

struct cStart {
  double seconds = 0;
  std::uint64_t bytes = 0;  ///< in both directions
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
    throw std::runtime_error("the scan did not start");
  }
  takeScan(scanner);
  return {now() - begin, host.getTotals().bytes};
}

/// Compares a start with its lower bound: the prescribed waits, the bytes on the line, one turn.
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
  addStart(report, 115200, median(quick), INITIAL_READ, start.bytes);
  // Four detections fail: at the present speed, then at the three speeds tried before the right
  // one. The bytes are those of the other start, since the count of this one includes garbage.
  const cStart slow = timeFirstScan(57600);
  addStart(report, 57600, slow.seconds, 4 * UNANSWERED_DETECTION + INITIAL_READ, start.bytes);
}
