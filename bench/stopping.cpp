#include <fmt/core.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <map>
#include <stdexcept>
#include <thread>

#include "bench/cFeeder.h"
#include "bench/cOtherLine.h"
#include "bench/cScannerReader.h"
#include "bench/cSimHost.h"
#include "bench/measure.h"
#include "bench/suites.h"

namespace {

using tarvo::cScanner;
using tarvo::eState;

// --- where a scanner may be when it is to stop -----------------------------------------

/// Brings a scanner somewhere; `share` (0 to 1) is the moment within whatever goes on there.
using tBring = void (*)(cScanner& scanner, double share);

void sleepFor(double seconds) {
  std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
}

/// In the midst of the search, which takes some 4 s without a sensor and 0.6 s at 57600 bits/s.
void letSearch(cScanner&, double share) { sleepFor(share); }

void letScan(cScanner& scanner, double share) {
  awaitState(scanner, eState::SCANNING);
  sleepFor(share);
}

void pauseIt(cScanner& scanner, double share) {
  letScan(scanner, share);
  if (!scanner.setLaser(false)) throw std::runtime_error("the laser does not go off");
}

void letWait(cScanner& scanner, double share) {
  awaitState(scanner, eState::WAITING);
  sleepFor(share);
}

double timeStop(const std::string& path, tBring bring, double share) {
  cScanner scanner(path);
  bring(scanner, share);
  const double begin = now();
  scanner.stop();
  return now() - begin;
}

// --- what is on its line ---------------------------------------------------------------

double timeOnSensor(eSimDialect dialect, int speed, tBring bring, double share) {
  cSimSetting setting;
  setting.dialect = dialect;
  setting.speed = speed;
  const cSimHost host(setting, 1);
  return timeStop(host.getPaths().front(), bring, share);
}

double timeOnLine(bool isBabbling, tBring bring, double share) {
  const cOtherLine line(isBabbling);
  return timeStop(line.getPath(), bring, share);
}

/// A sensor that hears no command any more and sends as fast as it is read.
double timeOnFlood(double share) {
  const cFeeder feeder(0);
  return timeStop(feeder.getPath(), letScan, share);
}

struct cCase {
  const char* name;
  double (*time)(double share);
};
constexpr auto SCIP1 = eSimDialect::SCIP1;
constexpr auto SCIP2 = eSimDialect::SCIP2;
constexpr int USB = 0;          // any speed
constexpr int SLOWEST = 19200;  // where a record takes a second, and its answer waits behind it
const cCase CASES[] = {
    {"searching_silent", [](double share) { return timeOnLine(false, letSearch, share); }},
    {"searching_babbling", [](double share) { return timeOnLine(true, letSearch, share); }},
    {"searching_57600", [](double share) { return timeOnSensor(SCIP2, 57600, letSearch, share); }},
    {"scanning", [](double share) { return timeOnSensor(SCIP2, USB, letScan, share); }},
    {"scanning_19200", [](double share) { return timeOnSensor(SCIP2, SLOWEST, letScan, share); }},
    {"scanning_scip1", [](double share) { return timeOnSensor(SCIP1, SLOWEST, letScan, share); }},
    {"scanning_flood", timeOnFlood},
    {"paused", [](double share) { return timeOnSensor(SCIP2, USB, pauseIt, share); }},
    {"paused_scip1", [](double share) { return timeOnSensor(SCIP1, SLOWEST, pauseIt, share); }},
    {"waiting_silent", [](double share) { return timeOnLine(false, letWait, share); }},
    {"waiting_babbling", [](double share) { return timeOnLine(true, letWait, share); }},
    {"waiting_no_device", [](double share) { return timeStop("/dev/tarvobench", letWait, share); }},
};

}  // namespace

void measureStopping(const cPlan& plan, cReport& report) {
  double worst = 0;
  std::map<std::string, double> worstByState;
  for (int round = 0; round < plan.startRounds; ++round) {
    for (const cCase& each : CASES) {
      const double seconds = each.time((round + 0.5) / plan.startRounds);
      worst = std::max(worst, seconds);
      worstByState[each.name] = std::max(worstByState[each.name], seconds);
    }
  }
  report.addRow("scanner_stop_s", worst, eGoal::AT_MOST, 1);
  report.note("scanner_stop_worst_s", worstByState);
}
