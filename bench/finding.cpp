#include <fmt/core.h>

#include <chrono>
#include <map>
#include <stdexcept>
#include <thread>

#include "bench/cOtherLine.h"
#include "bench/cScannerReader.h"
#include "bench/cSimHost.h"
#include "bench/measure.h"
#include "bench/suites.h"

namespace {

constexpr double LONGEST_TURN = 0.1;  // seconds; of the short range sensor
constexpr double BITS_A_BYTE = 10;    // on a serial line: start, eight, stop

// --- the first scan --------------------------------------------------------------------

struct cKind {
  const char* name;
  eSimDialect dialect;
  eSimModel model;
};
const cKind KINDS[] = {
    {"scip2_short", eSimDialect::SCIP2, eSimModel::SHORT_RANGE},
    {"scip2_long", eSimDialect::SCIP2, eSimModel::LONG_RANGE},
    {"scip1_short", eSimDialect::SCIP1, eSimModel::SHORT_RANGE},
    {"scip1_long", eSimDialect::SCIP1, eSimModel::LONG_RANGE},
};

struct cGoal {
  int speed;
  double seconds;
};
const cGoal FIRST_SCAN_GOALS[] = {{115200, 0.5}, {500000, 0.7}, {57600, 1.2}};

/// Bytes of a scan's record on the line.
std::size_t recordSize(const tarvo::cLaserScan& scan) {
  constexpr std::size_t LINE = 64;
  const bool isScip2 = scan.sensor->dialect != tarvo::eDialect::SCIP1;
  const std::size_t data = scan.distances.size() * (isScip2 ? 3 : 2);
  const std::size_t lines = (data + LINE - 1) / LINE;
  // Before the data: echo, status and, in SCIP 2.0, the time; behind it the empty line.
  return isScip2 ? 18 + 4 + 6 + data + 2 * lines + 1 : 10 + 2 + data + lines + 1;
}

/// Seconds from the scanner's making to its first scan, without the line's time for that. The
/// sensor is in its turn as far as `share` (0 to 1) then: it began with one.
double timeFirstScan(const cKind& kind, int speed, double share) {
  cSimSetting setting;
  setting.dialect = kind.dialect;
  setting.model = kind.model;
  setting.speed = speed;
  const cSimHost host(setting, 1);
  std::this_thread::sleep_for(std::chrono::duration<double>(LONGEST_TURN * share));
  const double begin = now();
  tarvo::cScanner scanner(host.getPaths().front());
  tarvo::cSubscription scans = scanner.subscribe(1);
  const tarvo::tScanPtr scan = takeScan(scans, scanner);
  return now() - begin - static_cast<double>(recordSize(*scan)) * BITS_A_BYTE / speed;
}

void measureFirstScan(const cPlan& plan, cReport& report) {
  std::map<std::string, std::vector<double>> times;
  for (int round = 0; round < plan.startRounds; ++round) {
    for (const cGoal& goal : FIRST_SCAN_GOALS) {
      for (const cKind& kind : KINDS) {
        times[fmt::format("{}_{}", goal.speed, kind.name)].push_back(
            timeFirstScan(kind, goal.speed, (round + 0.5) / plan.startRounds));
      }
    }
  }
  for (const cGoal& goal : FIRST_SCAN_GOALS) {
    for (const cKind& kind : KINDS) {
      const std::string name = fmt::format("{}_{}", goal.speed, kind.name);
      report.addRow("scanner_first_scan_s/" + name, median(times[name]), eGoal::AT_MOST,
                    goal.seconds);
    }
  }
  report.note("scanner_first_scans_s", times);
}

// --- no sensor -------------------------------------------------------------------------

double timeVerdict(bool isBabbling) {
  const cOtherLine line(isBabbling);
  const double begin = now();
  const tarvo::cScanner scanner(line.getPath());
  awaitState(scanner, tarvo::eState::WAITING);
  const double seconds = now() - begin;
  if (scanner.getHealth().problem.kind == tarvo::eProblem::NO_SENSOR) return seconds;
  throw std::runtime_error("a line without a sensor: " + scanner.getHealth().problem.message);
}

void measureVerdict(const cPlan& plan, cReport& report) {
  std::vector<double> silent, babbling;
  for (int round = 0; round < plan.startRounds; ++round) {
    silent.push_back(timeVerdict(false));
    babbling.push_back(timeVerdict(true));
  }
  report.addRow("scanner_verdict_s/silent", median(silent), eGoal::AT_MOST, 5);
  report.addRow("scanner_verdict_s/babbling", median(babbling), eGoal::AT_MOST, 5);
}

}  // namespace

void measureFinding(const cPlan& plan, cReport& report) {
  measureFirstScan(plan, report);
  measureVerdict(plan, report);
}
