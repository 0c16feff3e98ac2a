#include "tools/cli/rangeOptions.h"

#include <fmt/format.h>

#include <algorithm>

#include "tools/base/cFailure.h"
#include "tools/cli/number.h"

namespace tool {

namespace {

constexpr int MAX_STEP = 9999;       // a command carries four digits
constexpr int MAX_CLUSTER = 99;      // two
constexpr int MAX_INTERVAL = 9;      // one
constexpr double MAX_SECONDS = 1e9;  // 31 years

void requireWithin(const char* name, int value, int lowest, int highest) {
  if (value >= lowest && value <= highest) return;
  throw cFailure(eExit::BAD_INPUT,
                 fmt::format("{} {} is not possible: give a number from {} to {}.", name, value,
                             lowest, highest));
}

}  // namespace

void cScanOptions::check() const {
  if (first) requireWithin("--first", *first, 0, MAX_STEP);
  if (last) requireWithin("--last", *last, 0, MAX_STEP);
  requireWithin("--cluster", cluster, 0, MAX_CLUSTER);
  requireWithin("--interval", interval, 0, MAX_INTERVAL);
  if (maxDistance && *maxDistance <= 0) {
    throw cFailure(
        eExit::BAD_INPUT,
        fmt::format("--max-distance {} is not possible: give millimetres above 0.", *maxDistance));
  }
  if (seconds && (*seconds <= 0 || *seconds > MAX_SECONDS)) {
    throw cFailure(eExit::BAD_INPUT,
                   fmt::format("--duration {} is not possible: give seconds above 0, up to {:.0f}.",
                               *seconds, MAX_SECONDS));
  }
  if (first && last && *first > *last) {
    throw cFailure(eExit::BAD_INPUT, fmt::format("--first {} lies behind --last {}: steps run "
                                                 "anti-clockwise, so give the smaller one first.",
                                                 *first, *last));
  }
}

void cScanOptions::applyTo(tarvo::cScannerOptions& scanner) const {
  scanner.firstStep = first;
  scanner.lastStep = last;
  scanner.cluster = std::max(cluster, 1);  // a command's 0 and 1 ask for the same
  scanner.skippedTurns = interval;
  scanner.maxDistance = maxDistance;
}

void addRangeOptions(CLI::App& command, cScanOptions& options) {
  const auto add = [&command](const char* name, auto& number, const char* text) {
    requireNumber<int>(command.add_option(name, number, text));
  };
  add("--first", options.first, "First step (default: the sensor's)");
  add("--last", options.last, "Last step (default: the sensor's)");
  add("--cluster", options.cluster, "Steps that make one point (default: 1)");
  add("--interval", options.interval, "Turns to skip after each scan, 0 to 9 (default: 0)");
  add("--max-distance", options.maxDistance,
      "Longest distance that matters, mm; up to 4095 needs fewer bytes (default: the sensor's)");
  requireNumber<double>(
      command
          .add_option("--duration", options.seconds,
                      "End after SECONDS of scanning, such as 2.5 (default: no limit)")
          ->type_name("SECONDS"));
}

}  // namespace tool
